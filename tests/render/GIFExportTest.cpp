#include "render/ExportFixture.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;

using Kind = ExportError::Kind;

class GIFExportTest : public ExportFixture {
protected:
    ExportRequest gif(VideoQuality quality = VideoQuality::High) {
        ExportRequest request = to("Film.gif");
        request.format = ExportFormat::GIF;
        request.quality = quality;
        return request;
    }
};

TEST_F(GIFExportTest, ShowsEveryMomentOfTheEditAtItsTime) {
    record(90);
    const auto project = plainProject({fragment(0, 1), fragment(2, 3, 2, 1)}); // 1.5 s
    struct Case {
        VideoQuality quality;
        double frameRate;
        int frames;
    };
    for (const Case& c :
         {Case{VideoQuality::VeryLow, 10, 15}, {VideoQuality::High, 20, 30}, {VideoQuality::Ultra, 24, 36}}) {
        const auto files = run(project, gif(c.quality));
        ASSERT_TRUE(files) << files.error().description();
        const auto film = open(files->video);
        EXPECT_EQ(film->properties().size, kTestSize);
        EXPECT_NEAR(film->properties().end.value, 1.5, 0.005);
        std::set<std::int64_t> numbers;
        for (int i = 0; i < c.frames; ++i) {
            const double t = i / c.frameRate;
            const auto frame = film->frameAt(SourceTime(t + 0.5 / c.frameRate));
            ASSERT_TRUE(frame);
            numbers.insert(frame->number);
            EXPECT_NEAR(frame->start.value, t, 0.005 + 1e-9);
            const double source = t < 1 - 1e-9 ? t : 2 + 2 * (t - 1);
            EXPECT_EQ(numberIn(*frame->picture), static_cast<int>(source * 30 + 1e-6)) << "frame " << i;
        }
        EXPECT_EQ(numbers.size(), static_cast<std::size_t>(c.frames)) << "one frame each";
        const JSONValue events = parseJSON(readFile(files->events.value_or("")).value()).value();
        EXPECT_EQ(events["video"]["fps"], c.frameRate);
    }
}

TEST_F(GIFExportTest, AVideoWithoutLengthIsOneFrame) {
    record(5);
    const auto files = run(plainProject({}), gif());
    ASSERT_TRUE(files) << files.error().description();
    const auto film = open(files->video);
    EXPECT_EQ(numberIn(*film->frameAt(SourceTime(0))->picture), 0);
    EXPECT_EQ(film->frameAt(SourceTime(1))->number, 0);
}

TEST_F(GIFExportTest, ProgressReachesTheEndOnlyWithTheWholeFile) {
    record(30);
    std::vector<double> fractions;
    ASSERT_TRUE(run(plainProject({fragment(0, 1)}), gif(),
                    [&](const ExportProgress& progress) { fractions.push_back(progress.fraction()); }));
    ASSERT_EQ(fractions.size(), 21U);
    EXPECT_TRUE(std::ranges::is_sorted(fractions));
    EXPECT_EQ(fractions[19], 0.99);
    EXPECT_EQ(fractions[20], 1);
}

TEST_F(GIFExportTest, AFailureLeavesTheOlderFile) {
    record(60);
    const auto project = plainProject({fragment(0, 2)});
    put(m_out / "Film.gif", "older");
    const std::string movie = readFile(m_bundle / "recording.mov").value();

    std::stop_source stopper;
    const auto stopped = run(
        project, gif(), [&](const ExportProgress&) { stopper.request_stop(); }, stopper.get_token());
    put(m_bundle / "recording.mov", movie.substr(0, movie.size() * 2 / 5));
    const auto cutOff = run(project, gif());
    put(m_bundle / "recording.mov", movie);
    const auto full = [&] {
        const FullDisk disk(20'000);
        return run(project, gif());
    }();
    for (const auto& [files, kind] :
         {std::pair{stopped, Kind::Stopped}, {cutOff, Kind::IncompleteRead}, {full, Kind::FileTooLarge}}) {
        ASSERT_FALSE(files);
        EXPECT_EQ(files.error().kind, kind) << files.error().description();
    }
    EXPECT_EQ(bytesBelow(m_out), (std::map<std::string, std::string>{{"Film.gif", "older"}}));

    const auto vanished = run(project, gif(), [&](const ExportProgress&) { fs::remove_all(m_out); });
    ASSERT_FALSE(vanished);
    EXPECT_EQ(vanished.error().kind, Kind::TargetFolderMissing);
    EXPECT_EQ((ExportError{Kind::GifDestinationFailed, {}, {}}).description(), "Could not write the GIF");
}

} // namespace
} // namespace morvelin
