// Whole takes of a real X server: recorded, written, decoded again, opened as projects.

#include <fstream>

#include "capture/CursorShapeLibrary.h"
#include "platform/null/NullPointerSource.h"
#include "platform/null/NullScreenSource.h"
#include "x11/TakeFixture.h"

namespace morvelin {

namespace fs = std::filesystem;

TEST_F(TakeTest, BecomesAProjectWithoutItsPause) {
    start(folder.path());
    runFor(loop, 0.4_s);
    paint(kGreen);
    desktop->movePointer(160, 120);
    desktop->press(1);
    runFor(loop, 0.01_s);
    desktop->release(1);
    runFor(loop, 0.5_s);
    take->pause();
    runFor(loop, 0.3_s);
    paint(kBlue);
    desktop->click(3);
    runFor(loop, 0.7_s);
    take->resume();
    runFor(loop, 0.5_s);
    const FinishedTake finished = stop();

    EXPECT_NEAR(finished.duration.value, 1.41, 0.15) << "the pause of 1 s is out of it";
    EXPECT_FALSE(finished.interruption);
    EXPECT_EQ(finished.bundleURL.parent_path(), folder.path());
    EXPECT_EQ(folder.names().size(), 1U) << "the movie has moved into the project";

    const auto project = open(finished.bundleURL);
    const auto movie = openMovie(project.recordingURL);
    ASSERT_TRUE(movie);
    EXPECT_NEAR(movie->properties().end.value, finished.duration.value, 0.02);
    EXPECT_NEAR(lumaAt(*movie, 0_s), lumaOf(kRed), 3);
    EXPECT_NEAR(lumaAt(*movie, 0.3_s), lumaOf(kRed), 3);
    EXPECT_NEAR(lumaAt(*movie, 0.7_s), lumaOf(kGreen), 3);
    EXPECT_NEAR(lumaAt(*movie, finished.duration), lumaOf(kBlue), 3) << "what came in the pause shows after it";

    EXPECT_EQ(project.capture.name, finished.name);
    const auto& events = project.cursorEvents;
    EXPECT_TRUE(std::ranges::is_sorted(events, {}, [](const CursorEvent& event) { return event.timestamp.value; }));
    EXPECT_NEAR(static_cast<double>(events.size()), 1.41 * 30 + 2, 8);
    std::vector<CursorEvent> presses;
    std::ranges::copy_if(events, std::back_inserter(presses),
                         [](const CursorEvent& event) { return event.event != CursorEventType::Move; });
    ASSERT_EQ(presses.size(), 2U) << "the click in the pause is gone";
    EXPECT_EQ(presses[0].event, CursorEventType::MouseDown);
    EXPECT_EQ(presses[0].x, 0.25);
    EXPECT_EQ(presses[0].y, 0.25);
    EXPECT_NEAR(presses[0].timestamp.value, 0.42, 0.1);
    EXPECT_NEAR((presses[1].timestamp - presses[0].timestamp).value, 0.012, 0.01);

    // The green came with the press: movie and pointer's track run on one clock.
    EXPECT_NEAR(lumaAt(*movie, presses[0].timestamp - 0.05_s), lumaOf(kRed), 3);
    EXPECT_NEAR(lumaAt(*movie, presses[0].timestamp + 0.05_s), lumaOf(kGreen), 3);
    EXPECT_TRUE(CursorShapeLibrary::load(finished.bundleURL));
}

TEST_F(TakeTest, LastsUntilStopOnAnIdleScreen) {
    start(folder.path());
    runFor(loop, 1.3_s);
    const auto finished = stop();
    EXPECT_NEAR(finished.duration.value, 1.3, 0.1);
    const auto movie = openMovie(finished.bundleURL / "recording.mov");
    ASSERT_TRUE(movie);
    EXPECT_NEAR(movie->properties().end.value, finished.duration.value, 0.02);
    EXPECT_LE(movie->frameAt(1.3_s)->number, movie->frameAt(0_s)->number + 1)
        << "the picture, and once more to flush it";
}

TEST_F(TakeTest, RecordsPointerShapesAsTheyChange) {
    const xcb_window_t text = desktop->openWindow({320, 0, 320, 480}, kGreen);
    desktop->setPointer(window, 68);
    desktop->setPointer(text, 152);
    desktop->movePointer(100, 100);
    start(folder.path());
    runFor(loop, 0.3_s);
    desktop->movePointer(400, 100);
    runFor(loop, 0.3_s);
    desktop->movePointer(100, 100);
    runFor(loop, 0.3_s);
    const auto finished = stop();

    const auto shapes = CursorShapeLibrary::load(finished.bundleURL);
    ASSERT_TRUE(shapes);
    ASSERT_EQ(shapes->track().changes.size(), 3U);
    const auto* over = shapes->shape(0.45_s);
    ASSERT_TRUE(over && shapes->shape(0.15_s));
    EXPECT_NE(over->id, shapes->shape(0.15_s)->id);
    EXPECT_EQ(shapes->shape(0.8_s)->id, shapes->shape(0.15_s)->id);
    EXPECT_TRUE(shapes->image(over->id));
    EXPECT_EQ(shapes->track().captureWidth, 640);
}

TEST_F(TakeTest, KeepsWhatItHasWhenTheDisplayGoesAway) {
    start(folder.path());
    runFor(loop, 0.3_s);
    paint(kBlue);
    runFor(loop, 0.4_s);
    display.kill();
    ASSERT_TRUE(runUntil(
        loop, [&] { return isInterrupted; }, 5_s));
    const auto finished = stop();
    ASSERT_TRUE(finished.interruption);
    EXPECT_EQ(*finished.interruption, "The screen capture ended before Stop was pressed: The X display “" +
                                          display.name() +
                                          "” has gone away.\n\nThe take keeps everything recorded up to that point.");
    EXPECT_NEAR(finished.duration.value, 0.7, 0.15);
    const auto movie = openMovie(open(finished.bundleURL).recordingURL);
    ASSERT_TRUE(movie);
    EXPECT_NEAR(lumaAt(*movie, finished.duration), lumaOf(kBlue), 3);
}

TEST_F(TakeTest, LeavesNothingWhenItCannotStart) {
    const auto sentence = [&](const fs::path& projects) {
        makeTake(projects);
        const auto started = runTask(loop, take->start());
        return started ? std::string("started") : started.error().description();
    };
    std::ofstream(folder.path() / "file") << "in the way";
    EXPECT_TRUE(sentence(folder.path() / "file" / "Projects")
                    .starts_with("Recording didn’t start: Could not create output directory: "));

    screen = std::make_unique<NullScreenSource>(X11ScreenSource::connect(":4711").error());
    pointer = std::make_unique<NullPointerSource>();
    EXPECT_TRUE(sentence(folder.path()).starts_with("Recording didn’t start: The X display “:4711” does not answer."));
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"file"}));
}

} // namespace morvelin
