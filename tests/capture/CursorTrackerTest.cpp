// The pointer's track on a virtual clock.

#include <cmath>

#include <gtest/gtest.h>

#include "capture/CursorTracker.h"
#include "capture/InMemoryPointer.h"
#include "core/base/SimulatedEventLoop.h"

namespace morvelin {

namespace {

constexpr PixelBox kArea{100, 200, 400, 300};

/// A desktop with one window, which a test moves.
class MovableWindow final : public ScreenSource {
public:
    Result<std::vector<Display>, ScreenError> displays() override { return failure(ScreenError{}); }
    Result<std::vector<DesktopWindow>, ScreenError> windows() override { return failure(ScreenError{}); }
    Result<std::unique_ptr<ScreenStream>, ScreenError> open(const ScreenStreamOptions&) override {
        return failure(ScreenError{});
    }
    std::optional<PixelBox> windowFrame(WindowID) override {
        ++questions;
        return frame;
    }

    std::optional<PixelBox> frame;
    int questions = 0;
};

class CursorTrackerTest : public testing::Test {
protected:
    void start() { tracker.start(kArea, {}, loop.now(), nullptr); }
    void press(HostTime time, CursorEventType event = CursorEventType::MouseDown) {
        pointer.button({time, *pointer.place, event, MouseButton::Left, 1});
    }

    SimulatedEventLoop loop;
    InMemoryPointer pointer;
    MovableWindow screen;
    CursorTracker tracker{loop, pointer, screen};
};

} // namespace

TEST_F(CursorTrackerTest, SamplesThirtyTimesASecondAlsoAtRest) {
    start();
    loop.advance(10_s);
    const auto events = tracker.stop();
    EXPECT_NEAR(static_cast<double>(events.size()), 301, 1);
    EXPECT_EQ(events.front().timestamp, SourceTime(0));
    EXPECT_NEAR((events[100].timestamp - events[99].timestamp).value, 1.0 / 30, 1e-9);
    EXPECT_FALSE(events[5].button || events[5].clickCount);
    loop.advance(1_s);
    EXPECT_TRUE(tracker.stop().empty()) << "nothing is sampled after the end";
}

TEST_F(CursorTrackerTest, GivesFractionsOfTheAreaPinnedToItsEdges) {
    struct Case {
        DesktopPoint at;
        double x;
        double y;
    };
    for (const auto& [at, x, y] : {Case{{100, 200}, 0, 0}, Case{{300, 350}, 0.5, 0.5}, Case{{500, 500}, 1, 1},
                                   Case{{2000, 10}, 1, 0}, Case{{-5, 900}, 0, 1}}) {
        pointer.place = at;
        start();
        const auto events = tracker.stop();
        ASSERT_EQ(events.size(), 1U);
        EXPECT_EQ(events[0].x, x) << at.x;
        EXPECT_EQ(events[0].y, y) << at.y;
    }
}

TEST_F(CursorTrackerTest, PutsLatePressesInTheirPlace) {
    start();
    loop.advance(0.95_s);
    // Both happened between two samples and are told a little later.
    press(HostTime(0.905));
    press(HostTime(0.915), CursorEventType::MouseUp);
    press(HostTime(0.915)); // the same moment: behind what came first
    loop.advance(0.1_s);
    const auto events = tracker.stop();
    std::vector<CursorEventType> kinds;
    for (const CursorEvent& event : events) {
        if (event.event == CursorEventType::Move) continue;
        kinds.push_back(event.event);
        EXPECT_EQ(event.button, MouseButton::Left);
        EXPECT_EQ(event.clickCount, 1);
    }
    using enum CursorEventType;
    EXPECT_EQ(kinds, (std::vector{MouseDown, MouseUp, MouseDown}));
    EXPECT_TRUE(std::ranges::is_sorted(events, {}, [](const CursorEvent& event) { return event.timestamp.value; }));
}

TEST_F(CursorTrackerTest, TakesPausesOut) {
    start();
    loop.advance(1_s);
    tracker.pause(loop.now());
    tracker.pause(loop.now() + 3_s); // already paused
    loop.advance(10_s);
    press(HostTime(5));
    tracker.resume(loop.now());
    loop.advance(0.5_s);
    press(HostTime(0.999));  // from before the pause
    press(HostTime(10.999)); // from within it
    press(HostTime(11.25));
    const auto events = tracker.stop();
    EXPECT_LE(events.back().timestamp, SourceTime(1.5));
    std::vector<double> presses;
    Seconds widestGap;
    for (std::size_t index = 0; index < events.size(); ++index) {
        if (index > 0) widestGap = std::max(widestGap, events[index].timestamp - events[index - 1].timestamp);
        if (events[index].event == CursorEventType::MouseDown) presses.push_back(events[index].timestamp.value);
    }
    ASSERT_EQ(presses.size(), 2U);
    EXPECT_NEAR(presses[0], 0.999, 1e-9);
    EXPECT_NEAR(presses[1], 1.25, 1e-9);
    EXPECT_LE(widestGap, 2 * CursorTracker::kSampleInterval + 1e-6_s) << "times go on where they stopped";
}

TEST_F(CursorTrackerTest, CountsFromTheFirstFrameAndNeverBelowZero) {
    loop.advance(5_s);
    tracker.start(kArea, {}, HostTime(4.5), nullptr);
    press(HostTime(4.4));
    press(HostTime(4.9));
    const auto events = tracker.stop();
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[0].timestamp, SourceTime(0));
    EXPECT_EQ(events[1].timestamp, SourceTime(0));
    EXPECT_NEAR(events[2].timestamp.value, 0.4, 1e-9);
}

TEST_F(CursorTrackerTest, FollowsAWindow) {
    struct Case {
        const char* what;
        std::optional<PixelBox> frame;
        double x;
        double y;
    };
    const std::vector<Case> cases{{"where it was", kArea, 0.5, 0.5},
                                  {"moved", PixelBox{200, 275, 400, 300}, 0.25, 0.25},
                                  {"gone", std::nullopt, 0.25, 0.25},
                                  {"smaller, in the movie's middle", PixelBox{200, 250, 200, 200}, 0.5, 0.5},
                                  {"larger, at half its size", PixelBox{100, 200, 800, 300}, 0.25, 0.5},
                                  {"moved a moment before a press", PixelBox{300, 350, 400, 300}, 0, 0}};
    screen.frame = kArea;
    pointer.place = DesktopPoint{300, 350};
    tracker.start(kArea, 7, loop.now(), nullptr);
    for (const Case& each : cases) {
        loop.advance(1_s);
        screen.frame = each.frame;
        press(loop.now());
    }
    EXPECT_NEAR(screen.questions, 6 * 10, 12) << "ten times a second, and for each press";
    std::vector<CursorEvent> presses = tracker.stop();
    std::erase_if(presses, [](const CursorEvent& event) { return event.event == CursorEventType::Move; });
    ASSERT_EQ(presses.size(), cases.size());
    for (std::size_t index = 0; index < cases.size(); ++index) {
        EXPECT_NEAR(presses[index].x, cases[index].x, 0.01) << cases[index].what;
        EXPECT_NEAR(presses[index].y, cases[index].y, 0.01) << cases[index].what;
    }
}

TEST_F(CursorTrackerTest, HasNothingWithoutAnAreaOrAPointer) {
    tracker.start({100, 100, 0, 50}, {}, loop.now(), nullptr);
    loop.advance(1_s);
    press(loop.now());
    EXPECT_TRUE(tracker.stop().empty());

    pointer.place.reset();
    start();
    loop.advance(1_s);
    EXPECT_TRUE(tracker.stop().empty());
    EXPECT_FALSE(pointer.button) << "the button monitor is gone";
}

} // namespace morvelin
