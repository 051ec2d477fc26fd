#include <cmath>
#include <thread>

#include "render/EditComposition.h"
#include "render/ExportFixture.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;

using Kind = ExportError::Kind;
using testing::ElementsAre;
using testing::HasSubstr;

using ExportEngineTest = ExportFixture;

TEST_F(ExportEngineTest, ShowsEveryMomentOfTheEditAtItsTime) {
    // Given a take of 3 s of which the middle is cut out and the end plays twice as fast.
    record(90);
    const auto project = plainProject({fragment(0, 1), fragment(2, 3, 2, 1)});
    const auto files = run(project, to("Film.mp4"));
    ASSERT_TRUE(files) << files.error().description();
    EXPECT_EQ(files->video, m_out / "Film.mp4");

    const auto film = open(files->video);
    EXPECT_EQ(film->properties().size, kTestSize);
    EXPECT_NEAR(film->properties().end.value, 1.5, 1e-6);
    EXPECT_NEAR(film->properties().nominalFrameRate, 30, 1e-6);
    for (int i = 0; i < 45; ++i) {
        const auto frame = film->frameAt(SourceTime((i + 0.5) / 30));
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->number, i) << "one frame each";
        EXPECT_EQ(numberIn(*frame->picture), i < 30 ? i : 60 + 2 * (i - 30)) << "output frame " << i;
    }
}

TEST_F(ExportEngineTest, FollowsARecordingWithFramesAtAnyTimes) {
    // Given bursts at 30 a second, times rounded by the movie's time base, and a second of stillness.
    std::vector<double> times;
    for (int i = 0; i < 20; ++i) times.push_back(i / 30.0 + (i % 3) * 0.0001);
    for (int i = 0; i < 20; ++i) times.push_back(1.6666 + i / 30.0);
    record(times, 3);
    ASSERT_TRUE(run(plainProject({fragment(0, 3)}), to("Film.mp4")));
    const auto film = open(m_out / "Film.mp4");
    for (int i = 0; i < 90; ++i) {
        const double t = i / 30.0 + 5e-4;
        const auto shown = std::ranges::upper_bound(times, t) - times.begin() - 1;
        EXPECT_EQ(numberIn(*film->frameAt(SourceTime((i + 0.5) / 30))->picture), shown) << "output frame " << i;
    }
}

TEST_F(ExportEngineTest, TheProjectsStyleIsDrawn) {
    record(30);
    auto project = plainProject({fragment(0, 1)});
    EditPayload& edit = project.versions[0].edit;
    edit.padding = 0.2;
    edit.background.type = BackgroundType::SolidColor;
    edit.background.solidColor = {1, 1, 1, 1};
    edit.zoomKeyframes = {{m_ids.next(), EditTime(0), 0_s, 1, ZoomTransitionType::Smooth, false},
                          {m_ids.next(), EditTime(0.1), 0.3_s, 2, ZoomTransitionType::Smooth, false}};
    edit.positionKeyframes = {{m_ids.next(), EditTime(0.4), 0.5, 0.5, 0.5, 0.5, {}, false}};
    for (int i = 0; i <= 30; ++i)
        project.cursorEvents.push_back({SourceTime(i / 30.0), 0.5, 0.5, CursorEventType::Move, {}, {}});

    ASSERT_TRUE(run(project, to("Film.mp4")));
    const auto film = open(m_out / "Film.mp4");
    const auto luma = [&](double t, int x, int y) { return film->frameAt(SourceTime(t))->picture->plane(0).row(y)[x]; };
    EXPECT_GT(luma(0.02, 10, 88), 220) << "the background beside the picture";
    EXPECT_LT(luma(0.02, 160, 88), 220) << "the picture in the middle";
    EXPECT_LT(luma(0.9, 10, 88), 220) << "zoomed in, the picture fills the frame";
}

TEST_F(ExportEngineTest, ForAIIsTheBareRecordingAtItsOwnRate) {
    record(90);
    auto project = plainProject({fragment(0, 3)});
    project.versions[0].edit.padding = 0.2;
    project.versions[0].edit.zoomKeyframes = {{m_ids.next(), EditTime(0), 0_s, 3, ZoomTransitionType::Smooth, true}};
    ExportRequest request = to("Film.mp4");
    request.purpose = ExportPurpose::ForAI;
    request.format = ExportFormat::GIF; // ignored, as the quality is
    request.quality = VideoQuality::VeryLow;
    ASSERT_TRUE(run(project, request));
    const auto film = open(m_out / "Film.mp4");
    EXPECT_EQ(film->properties().size, kTestSize);
    for (int i = 0; i < 15; ++i) {
        const auto frame = film->frameAt(SourceTime((i + 0.5) / 5));
        EXPECT_EQ(frame->number, i);
        EXPECT_EQ(numberIn(*frame->picture), 6 * i) << "five frames a second of thirty";
    }
}

TEST_F(ExportEngineTest, AnExportWithoutANameGoesToTheExportsFolder) {
    record(5);
    const auto project = plainProject({fragment(0, 0.1)});
    const fs::path folder = m_folder.path() / "home/Movies/Morvelin/Exports";
    ExportRequest forAI;
    forAI.purpose = ExportPurpose::ForAI;
    EXPECT_EQ(run(project).value().video, folder / "Export_1700000000.mp4");
    EXPECT_EQ(run(project, forAI).value().video, folder / "Export_1700000000-mp4-agent.mp4");
    EXPECT_TRUE(fs::exists(folder / "Export_1700000000.mp4"));
}

TEST_F(ExportEngineTest, TheSidecarsLieBesideTheVideoWhenTheyAreWanted) {
    record(15);
    const auto project = plainProject({fragment(0, 0.5)});
    const auto silent = run(project, to("Silent.mp4"));
    ASSERT_TRUE(silent);
    EXPECT_EQ(silent->events, m_out / "Silent.events.json");
    EXPECT_EQ(silent->transcript, std::nullopt) << "nothing is said";
    const JSONValue events = parseJSON(readFile(*silent->events).value()).value();
    EXPECT_EQ(events["generator"], "Morvelin 1.2.3 (founder mode)");
    EXPECT_EQ(events["video"], parseJSON(R"({"file":"Silent.mp4","duration":0.5,"fps":30,
                                             "resolution":{"width":320,"height":176}})")
                                   .value());

    say({{SourceTime(0.1), SourceTime(0.3), "Hello.", 0.9}});
    const auto spoken = run(project, to("Film.mp4"));
    EXPECT_EQ(spoken->transcript, m_out / "Film.transcript.json");
    const JSONValue transcript = parseJSON(readFile(*spoken->transcript).value()).value();
    EXPECT_EQ(transcript["video"], parseJSON(R"({"file":"Film.mp4","duration":0.5})").value());
    EXPECT_EQ(transcript["segments"][0]["text"], "Hello.");

    m_sidecars = SidecarChoice::None;
    EXPECT_EQ(run(project, to("Bare.mp4"))->events, std::nullopt);
    EXPECT_FALSE(fs::exists(m_out / "Bare.events.json"));
    m_sidecars = SidecarChoice::Written;

    for (const char* kind : {"events", "transcript"})
        fs::create_directory(m_out / fmt::format("Blocked.{}.json", kind));
    const auto blocked = run(project, to("Blocked.mp4"));
    ASSERT_TRUE(blocked) << "no failure of the export";
    EXPECT_EQ(blocked->events, std::nullopt);
    EXPECT_EQ(blocked->transcript, std::nullopt);
    EXPECT_THAT(m_log, ElementsAre(HasSubstr("[FounderMode] Failed to write events sidecar: "),
                                   HasSubstr("[FounderMode] Failed to write transcript sidecar: ")));
}

TEST_F(ExportEngineTest, TheVideoIsOfTheMomentItsExportBegan) {
    record(60);
    const auto project = plainProject({fragment(0, 2)});
    say({{SourceTime(0.1), SourceTime(0.3), "before", 0.9}});
    for (const ExportFormat format : {ExportFormat::MP4, ExportFormat::GIF}) {
        ExportRequest request = to(format == ExportFormat::GIF ? "Film.gif" : "Film.mp4");
        request.format = format;
        // When somebody throws the whole project away in the middle.
        const fs::path elsewhere = m_folder.path() / "Trash";
        const auto files = run(project, request, [&](const ExportProgress& progress) {
            if (progress.frame == 10) fs::rename(m_bundle, elsewhere);
        });
        fs::rename(elsewhere, m_bundle);
        ASSERT_TRUE(files) << files.error().description();
        const auto film = open(files->video);
        EXPECT_EQ(numberIn(*film->frameAt(SourceTime(1.01))->picture), 30);
        EXPECT_THAT(readFile(files->transcript.value_or("")).value_or(""), HasSubstr("before"));
    }
}

TEST_F(ExportEngineTest, ProgressGrowsFrameByFrameToTheEnd) {
    record(20);
    std::vector<std::int64_t> frames;
    double last = 0;
    ASSERT_TRUE(run(plainProject({fragment(0, 20 / 30.0)}), to("Film.mp4"), [&](const ExportProgress& progress) {
        frames.push_back(progress.frame);
        last = progress.fraction();
    }));
    EXPECT_EQ(frames.size(), 20U);
    EXPECT_TRUE(std::ranges::is_sorted(frames));
    EXPECT_EQ(last, 1);
}

TEST_F(ExportEngineTest, TheSameProjectGivesTheSameBytesHoweverManyPartsAreRenderedAtATime) {
    // Given a film of three parts with a camera that moves across their seams, and a long stillness.
    record(360);
    auto project = plainProject({fragment(0, 12)});
    EditPayload& edit = project.versions[0].edit;
    edit.padding = 0.1;
    edit.zoomKeyframes = {{m_ids.next(), EditTime(0), 0_s, 1, ZoomTransitionType::Smooth, false},
                          {m_ids.next(), EditTime(3.5), 1_s, 2, ZoomTransitionType::Smooth, false},
                          {m_ids.next(), EditTime(7.8), 1_s, 1, ZoomTransitionType::Smooth, false}};
    for (const int threads : {1, 3}) {
        m_threads = threads;
        ASSERT_TRUE(run(project, to(threads == 1 ? "One.mp4" : "Three.mp4")));
    }
    EXPECT_TRUE(readFile(m_out / "One.mp4").value() == readFile(m_out / "Three.mp4").value());
}

TEST_F(ExportEngineTest, AStopLeavesTheOlderFileAndNothingElse) {
    record(60);
    const auto project = plainProject({fragment(0, 2)});
    put(m_out / "Film.mp4", "older");
    std::stop_source stopper;
    struct Case {
        const char* what;
        std::function<void()> stop;
    };
    for (const Case& c : {Case{"the caller's token", [&] { stopper.request_stop(); }},
                          {"the registry", [&] { m_activity.cancelAll(); }}}) {
        stopper = {};
        const auto files = run(
            project, to("Film.mp4"),
            [&](const ExportProgress& progress) {
                EXPECT_TRUE(m_activity.isExporting());
                if (progress.frame == 10) c.stop();
                EXPECT_LE(progress.frame, 10) << c.what;
            },
            stopper.get_token());
        ASSERT_FALSE(files) << c.what;
        EXPECT_EQ(files.error().kind, Kind::Stopped);
        EXPECT_FALSE(m_activity.isExporting());
        EXPECT_EQ(bytesBelow(m_out), (std::map<std::string, std::string>{{"Film.mp4", "older"}})) << c.what;
    }
}

TEST_F(ExportEngineTest, AnExportGoesOnWhileItsNeighbourIsCancelled) {
    record(60);
    const auto project = plainProject({fragment(0, 2)});
    std::stop_source stopper;
    std::jthread neighbour;
    bool neighbourStopped = false;
    const auto files = run(project, to("Film.mp4"), [&](const ExportProgress& progress) {
        if (progress.frame == 5)
            neighbour = std::jthread([&] {
                SeededIdSource ids(99);
                ExportEngine engine{
                    {m_readers, m_soundReaders, m_writers, m_activity, ids, m_clock, {}, m_folder.path(), ""}};
                const auto cancelled = engine.exportProject(
                    project, to("Neighbour.mp4"), [&](const ExportProgress&) { stopper.request_stop(); },
                    stopper.get_token());
                neighbourStopped = !cancelled && cancelled.error().kind == Kind::Stopped;
            });
        if (progress.frame == 30) neighbour.join();
    });
    ASSERT_TRUE(files);
    EXPECT_TRUE(neighbourStopped);
    EXPECT_THAT(bytesBelow(m_out),
                testing::UnorderedElementsAre(testing::Key("Film.mp4"), testing::Key("Film.events.json")));
}

TEST_F(ExportEngineTest, EveryFailureIsOneSentenceAndLeavesNoFile) {
    record(60);
    const auto good = plainProject({fragment(0, 2)});
    const std::string movie = readFile(m_bundle / "recording.mov").value();
    // A movie without pictures: a tenth of a second of silence.
    std::string silence(
        "RIFF\x24\x08\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x40\x1f\0\0\x40\x1f\0\0\x01\0\x08\0data\0\x08\0\0", 44);
    silence.append(2048, '\x80');
    std::string damaged = movie;
    for (std::size_t i = movie.size() / 2; i < movie.size() * 2 / 3; i += 3) damaged[i] = '\x5a';

    struct Case {
        const char* what;
        std::optional<std::string> recording; ///< in place of the real one
        std::vector<VideoFragment> fragments;
        ExportRequest request;
        Kind kind;
        std::string sentence;
    };
    const std::vector<VideoFragment> all = good.versions[0].edit.fragments;
    const std::vector<Case> cases{
        {"no recording", "", all, to("Film.mp4"), Kind::NoRecording, "No recording file found"},
        {"no movie at all", "This is a text.", all, to("Film.mp4"), Kind::RecordingUnreadable, "“recording.mov”"},
        {"no video track", silence, all, to("Film.mp4"), Kind::NoVideoTrack, "No video track in recording"},
        {"cut off", movie.substr(0, movie.size() * 2 / 5), all, to("Film.mp4"), Kind::IncompleteRead,
         "The recording could not be read to the end"},
        {"damaged inside", damaged, all, to("Film.mp4"), Kind::IncompleteRead,
         "The recording could not be read to the end"},
        {"nothing to show", movie, {}, to("Film.mp4"), Kind::ExportSessionFailed, "Could not create export session"},
        {"not finite",
         movie,
         {fragment(0, std::nan(""))},
         to("Film.mp4"),
         Kind::CompositionFailed,
         "Could not build edit composition"},
        {"no folder", movie, all, to("gone/Film.mp4"), Kind::TargetFolderMissing, "doesn’t exist"},
        {"a folder", movie, all, to("."), Kind::TargetIsFolder, "is a folder"}};
    for (const Case& c : cases) {
        if (c.recording->empty())
            fs::remove(m_bundle / "recording.mov");
        else
            put(m_bundle / "recording.mov", *c.recording);
        const auto files = run(plainProject(c.fragments), c.request);
        ASSERT_FALSE(files) << c.what;
        EXPECT_EQ(files.error().kind, c.kind) << c.what << ": " << files.error().detail;
        EXPECT_THAT(files.error().description(), HasSubstr(c.sentence)) << c.what;
        EXPECT_THAT(bytesBelow(m_out), testing::IsEmpty()) << c.what;
    }
}

TEST_F(ExportEngineTest, ADiskThatFillsLeavesTheOlderFile) {
    record(90);
    put(m_out / "Film.mp4", "older");
    const auto files = [&] {
        const FullDisk disk(20'000);
        return run(plainProject({fragment(0, 3)}), to("Film.mp4"));
    }();
    ASSERT_FALSE(files);
    EXPECT_EQ(files.error().kind, Kind::FileTooLarge);
    EXPECT_EQ(bytesBelow(m_out), (std::map<std::string, std::string>{{"Film.mp4", "older"}}));
}

TEST_F(ExportEngineTest, AFolderThatVanishesMeanwhileIsTold) {
    record(60);
    const auto files = run(plainProject({fragment(0, 2)}), to("Film.mp4"), [&](const ExportProgress& progress) {
        if (progress.frame == 30) fs::remove_all(m_out);
    });
    ASSERT_FALSE(files);
    EXPECT_EQ(files.error().kind, Kind::TargetFolderMissing);
}

TEST(ExportError, SystemReasonsHaveTheirOwnSentences) {
    struct Case {
        int code;
        Kind kind;
        const char* words;
    };
    for (const Case& c : {Case{ENOSPC, Kind::DiskFull, "The disk is full"},
                          {EDQUOT, Kind::DiskFull, "The disk is full"},
                          {EFBIG, Kind::FileTooLarge, "grew larger"},
                          {ENOENT, Kind::TargetFolderMissing, "The folder /a doesn’t"},
                          {EACCES, Kind::TargetNotWritable, "Permission denied"},
                          {EROFS, Kind::TargetNotWritable, "Read-only"}}) {
        const ExportError error = ExportError::from(MovieWriterError{MovieWriterError::Kind::WritingFailed, "", c.code},
                                                    "/a/Film.mp4");
        EXPECT_EQ(error.kind, c.kind);
        EXPECT_THAT(error.description(), HasSubstr(c.words));
    }
}

} // namespace
} // namespace morvelin
