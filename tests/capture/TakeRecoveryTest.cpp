// An abandoned take's folder becomes a project, whatever of it is left; a running one's is not touched.

#include <fstream>

#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "capture/CursorShapeLibrary.h"
#include "capture/TakeJournal.h"
#include "capture/TakeRecovery.h"
#include "media/FFmpegMovieReader.h"
#include "media/FFmpegMovieWriter.h"

namespace morvelin {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using Outcome = RecoveredTake::Outcome;

class TakeRecoveryTest : public testing::Test {
protected:
    TakeFolder begin(const std::string& name) { return std::move(TakeFolder::create(folder.path(), name).value()); }
    TakeJournal write(const TakeFolder& take) {
        const TakeHeader header{.version = 1,
                                .name = "Recording 9:41",
                                .createdAt = Date::fromUnixSeconds(1'700'000'000),
                                .kind = RecordingKind::Agent,
                                .source = {}};
        return std::move(TakeJournal::create(take, header, [](std::string_view) {}).value());
    }
    /// A take's movie of one second, never finished.
    void record(const TakeFolder& take) {
        const MovieSettings settings{.path = take.movie(),
                                     .container = MovieSettings::Container::FragmentedQuickTime,
                                     .pace = MovieSettings::Pace::RealTime,
                                     .size = {64, 48},
                                     .bitRate = 12'000'000,
                                     .keyFrameInterval = Seconds(1)};
        FFmpegMovieWriterFactory writers;
        const auto writer = std::move(writers.create(settings).value());
        Picture picture({64, 48}, Subsampling::Quarter);
        for (int plane = 0; plane < 3; ++plane)
            for (int y = 0; y < picture.plane(plane).height; ++y)
                std::fill_n(picture.plane(plane).row(y), picture.plane(plane).width, std::uint8_t{100});
        const PixelBox whole{0, 0, 64, 48};
        for (int frame = 0; frame <= 60; ++frame)
            ASSERT_TRUE(writer->append(picture, Seconds(frame / 60.0), {&whole, 1}));
        ASSERT_TRUE(writer->flush());
    }
    std::vector<RecoveredTake> recover() { return recoverTakes(folder.path(), readers, services()); }
    ProjectBundle::Services services() {
        return {ids, clock, [](std::string_view) {}};
    }

    TemporaryFolder folder;
    FFmpegMovieReaderFactory readers;
    RandomIdSource ids;
    SystemClock clock;
};

} // namespace

TEST_F(TakeRecoveryTest, MakesAProjectOfAllThatWasWrittenDown) {
    {
        const TakeFolder take = begin("Recording 9:41");
        TakeJournal journal = write(take);
        journal.addArea(640, 480);
        journal.add({.id = 0, .kind = CursorShapeTrack::Kind::Arrow, .width = 2, .height = 2},
                    Image{{2, 2}, std::vector<std::uint8_t>(16, 255)});
        journal.add(CursorShapeTrack::Change{SourceTime(0), 0});
        for (const double time : {0.0, 0.3, 0.2, 7.0}) // a press may come after a later place; the last is past the end
            journal.add(CursorEvent{SourceTime(time), 0.5, 0.5, CursorEventType::Move, {}, {}});
        std::ofstream(take.journal(), std::ios::app) << "no line\n[]\n{\"event\":7}\n{\"event\":{\"timestamp\":0.4,";
        record(take);
        EXPECT_TRUE(recover().empty()) << "it runs still";
    }
    const auto recovered = recover();
    ASSERT_EQ(recovered.size(), 1U);
    EXPECT_EQ(recovered[0].outcome, Outcome::BecameProject) << recovered[0].reason;
    EXPECT_NEAR(recovered[0].duration.value, 1, 0.05);
    EXPECT_EQ(recovered[0].place, folder.path() / "Recording 9-41.morvelin");
    EXPECT_EQ(recovered[0].description(), "Recovered “Recording 9-41”, 1.0 s, as " + recovered[0].place.string());
    EXPECT_THAT(folder.names(), ElementsAre("Recording 9-41.morvelin"));

    const auto project = ProjectBundle::load(recovered[0].place, services()).value();
    EXPECT_EQ(project.capture.name, "Recording 9:41");
    EXPECT_EQ(project.capture.createdAt, Date::fromUnixSeconds(1'700'000'000));
    EXPECT_EQ(project.capture.recordingKind, RecordingKind::Agent);
    std::vector<double> times;
    for (const CursorEvent& event : project.cursorEvents) times.push_back(event.timestamp.value);
    EXPECT_THAT(times, ElementsAre(0, 0.2, 0.3));
    const auto shapes = CursorShapeLibrary::load(recovered[0].place);
    ASSERT_TRUE(shapes);
    EXPECT_EQ(shapes->track().captureWidth, 640);
    EXPECT_TRUE(shapes->image(0));
    EXPECT_TRUE(recover().empty()) << "once";
}

TEST_F(TakeRecoveryTest, CopesWithWhatIsMissing) {
    (void)begin("a nothing at all");
    record(begin("b movie alone"));
    {
        const TakeFolder take = begin("c header alone");
        (void)write(take);
        std::ofstream(take.movie()) << "only a beginning";
    }
    {
        const TakeFolder take = begin("d unreadable");
        std::ofstream(take.movie()) << std::string(100'000, 'x');
    }
    const auto recovered = recover();
    std::vector<Outcome> outcomes;
    for (const RecoveredTake& take : recovered) outcomes.push_back(take.outcome);
    EXPECT_THAT(outcomes,
                ElementsAre(Outcome::HeldNothing, Outcome::BecameProject, Outcome::HeldNothing, Outcome::Failed));
    EXPECT_THAT(recovered[3].description(), EndsWith(" Its files are kept in " + recovered[3].place.string()));
    EXPECT_THAT(folder.names(), ElementsAre("b movie alone.morvelin", "d unreadable.take"));
}

TEST_F(TakeRecoveryTest, GivesEachTakeANameOfItsOwn) {
    const TakeFolder first = begin("Take");
    fs::create_directory(folder.path() / "Take 2.morvelin");
    const TakeFolder second = begin("Take");
    EXPECT_EQ(first.path().filename(), "Take.take");
    EXPECT_EQ(second.path().filename(), "Take 3.take");
    EXPECT_EQ(second.bundleURL().filename(), "Take 3.morvelin");
}

} // namespace morvelin
