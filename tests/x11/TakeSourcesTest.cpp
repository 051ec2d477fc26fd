// Takes of a window and of an area: picture, pointer and end.

#include "x11/TakeFixture.h"

namespace morvelin {

namespace {

std::vector<CursorEvent> pressesIn(const ProjectBundle::Contents& project) {
    std::vector<CursorEvent> presses;
    std::ranges::copy_if(project.cursorEvents, std::back_inserter(presses),
                         [](const CursorEvent& event) { return event.event == CursorEventType::MouseDown; });
    return presses;
}

} // namespace

TEST_F(TakeTest, FollowsAWindowUntilItIsClosed) {
    const xcb_window_t notes = desktop->openWindow({100, 100, 201, 100}, kGreen);
    desktop->setTitle(notes, "Notes – draft");
    desktop->openWindow({150, 120, 300, 300}, kRed); // covers it
    start(folder.path(), WindowTarget{"notes", {}});
    runFor(loop, 0.4_s);
    desktop->movePointer(150, 150);
    desktop->click(1);
    runFor(loop, 0.2_s);
    desktop->place(notes, {400, 300, 201, 100});
    runFor(loop, 0.2_s);
    desktop->movePointer(550, 325);
    desktop->click(1);
    desktop->fill(notes, {0, 0, 201, 100}, kBlue);
    desktop->settle();
    runFor(loop, 0.4_s);
    desktop->close(notes);
    ASSERT_TRUE(runUntil(
        loop, [&] { return isInterrupted; }, 5_s));
    const auto finished = stop();
    EXPECT_EQ(finished.interruption, "The screen capture ended before Stop was pressed: The recorded window “Notes – "
                                     "draft” was closed.\n\nThe take keeps everything recorded up to that point.");
    const auto project = open(finished.bundleURL);
    const auto movie = openMovie(project.recordingURL);
    ASSERT_TRUE(movie);
    EXPECT_EQ(movie->properties().size, (PixelSize{200, 100}));
    EXPECT_NEAR(lumaAt(*movie, 0.2_s, 0.9, 0.9), lumaOf(kGreen), 3) << "where it was covered";
    EXPECT_NEAR(lumaAt(*movie, finished.duration, 0.9, 0.9), lumaOf(kBlue), 3);
    const auto presses = pressesIn(project);
    ASSERT_EQ(presses.size(), 2U);
    EXPECT_NEAR(presses[0].x, 0.25, 0.01);
    EXPECT_NEAR(presses[0].y, 0.5, 0.01);
    EXPECT_NEAR(presses[1].x, 0.75, 0.01);
    EXPECT_NEAR(presses[1].y, 0.25, 0.01);
}

TEST_F(TakeTest, RecordsAnAreaOfTheSecondMonitorUntilThatGoes) {
    desktop->addMonitor("left", {0, 0, 320, 480});
    desktop->addMonitor("right", {320, 0, 320, 480});
    desktop->fill(window, {340, 40, 200, 100}, kGreen);
    desktop->settle();
    start(folder.path(), AreaTarget{{20, 40, 200, 100}, "right"});
    runFor(loop, 0.3_s);
    desktop->movePointer(440, 90);
    desktop->click(3);
    desktop->fill(window, {0, 0, 330, 480}, kBlue); // beside it
    desktop->settle();
    runFor(loop, 0.3_s);
    desktop->removeMonitor("right");
    ASSERT_TRUE(runUntil(
        loop, [&] { return isInterrupted; }, 5_s));
    const auto finished = stop();
    EXPECT_NE(finished.interruption.value_or("").find("The display “right” is not connected."), std::string::npos);
    const auto project = open(finished.bundleURL);
    const auto movie = openMovie(project.recordingURL);
    ASSERT_TRUE(movie);
    EXPECT_EQ(movie->properties().size, (PixelSize{200, 100}));
    for (const double corner : {0.01, 0.99})
        EXPECT_NEAR(lumaAt(*movie, finished.duration, corner, corner), lumaOf(kGreen), 3) << corner;
    const auto presses = pressesIn(project);
    ASSERT_EQ(presses.size(), 1U);
    EXPECT_NEAR(presses[0].x, 0.5, 0.01);
    EXPECT_NEAR(presses[0].y, 0.5, 0.01);
}

TEST_F(TakeTest, RefusesWhatIsNotThereAndLeavesNothing) {
    struct Case {
        CaptureTarget target;
        CaptureError::Kind cause;
        const char* words;
    };
    using enum CaptureError::Kind;
    for (const auto& [target, cause, words] :
         {Case{WindowTarget{"Calendar", {}}, WindowNotFound, "No target window was selected for capture."},
          Case{DisplayTarget{"HDMI-7"}, DisplayNotFound, "No capturable display was found."},
          Case{AreaTarget{{600, 0, 100, 100}, ""}, InvalidCropRect,
               "Selected area is invalid for the chosen display."}}) {
        makeTake(folder.path(), target);
        const auto started = runTask(loop, take->start());
        ASSERT_FALSE(started);
        EXPECT_EQ(started.error().cause, cause);
        EXPECT_EQ(started.error().description(), std::string("Recording didn’t start: ") + words);
    }
    EXPECT_TRUE(folder.names().empty());
}

} // namespace morvelin
