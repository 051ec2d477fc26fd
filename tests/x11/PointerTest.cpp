// The pointer of a real X server, moved and pressed by XTest.

#include <algorithm>
#include <array>

#include <gtest/gtest.h>

#include "capture/LoopRunner.h"
#include "platform/x11/ServerClock.h"
#include "platform/x11/X11PointerSource.h"
#include "x11/Desktop.h"
#include "x11/VirtualDisplay.h"

namespace morvelin {

namespace {

constexpr std::uint16_t kTextGlyph = 152; ///< the pointer font's I-beam

class PointerTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(display.name().empty()) << "Xvfb is missing";
        desktop.emplace(display.name());
        auto connected = X11PointerSource::connect(display.name());
        ASSERT_TRUE(connected) << connected.error().description();
        pointer = std::move(*connected);
        monitor = pointer->onButton(loop, [this](const PointerButtonEvent& event) { events.push_back(event); });
    }

    bool waitForEvents(std::size_t count) {
        return runUntil(
            loop, [&] { return events.size() >= count; }, 5_s);
    }

    VirtualDisplay display;
    std::optional<Desktop> desktop;
    GLibEventLoop loop;
    std::unique_ptr<X11PointerSource> pointer;
    EventLoop::Timer monitor;
    std::vector<PointerButtonEvent> events;
};

} // namespace

TEST_F(PointerTest, TellsWhereAndWhenAButtonWentDownAndUp) {
    desktop->movePointer(300, 200);
    const HostTime before = loop.now();
    desktop->press(1);
    runFor(loop, 0.05_s);
    const HostTime between = loop.now();
    desktop->movePointer(320, 230);
    desktop->release(1);
    ASSERT_TRUE(waitForEvents(2));
    const HostTime after = loop.now();

    EXPECT_EQ(events[0].event, CursorEventType::MouseDown);
    EXPECT_EQ(events[0].location.x, 300);
    EXPECT_EQ(events[0].location.y, 200);
    EXPECT_GE(events[0].time, before - 0.002_s);
    EXPECT_LE(events[0].time, between);
    EXPECT_EQ(events[1].event, CursorEventType::MouseUp);
    EXPECT_EQ(events[1].location.x, 320);
    EXPECT_GE(events[1].time, between - 0.002_s);
    EXPECT_LE(events[1].time, after);
    const auto where = pointer->location();
    ASSERT_TRUE(where);
    EXPECT_EQ(where->x, 320);
    EXPECT_EQ(where->y, 230);
}

TEST_F(PointerTest, CountsClicksByTimePlaceAndButton) {
    struct Case {
        const char* what;
        Seconds gap;
        int x;
        std::uint8_t button;
        std::int64_t count;
    };
    for (const auto& [what, gap, x, button, count] :
         {Case{"at once", 0.02_s, 100, 1, 2}, Case{"three pixels off", 0.02_s, 103, 1, 2},
          Case{"ten pixels off", 0.02_s, 110, 1, 1}, Case{"another button", 0.02_s, 100, 3, 1},
          Case{"later", 0.6_s, 100, 1, 1}}) {
        runFor(loop, 0.6_s);
        events.clear();
        desktop->movePointer(100, 100);
        desktop->click(1);
        runFor(loop, gap);
        desktop->movePointer(x, 100);
        desktop->click(button);
        ASSERT_TRUE(waitForEvents(4)) << what;
        EXPECT_EQ(events[0].clickCount, 1) << what;
        EXPECT_EQ(events[2].clickCount, count) << what;
        EXPECT_EQ(events[3].clickCount, count) << what << ", the release";
    }
}

TEST_F(PointerTest, KnowsButtonsAndLeavesOutTheWheel) {
    for (std::uint8_t number = 1; number <= 8; ++number) desktop->click(number);
    ASSERT_TRUE(waitForEvents(8));
    runFor(loop, 0.05_s);
    std::vector<MouseButton> pressed;
    for (const PointerButtonEvent& event : events)
        if (event.event == CursorEventType::MouseDown) pressed.push_back(event.button);
    using enum MouseButton;
    EXPECT_EQ(pressed, (std::vector{Left, Other, Right, Other}));
}

TEST_F(PointerTest, TakesALeftHandedDesktopsButtons) {
    const std::array<std::uint8_t, 10> swapped{3, 2, 1, 4, 5, 6, 7, 8, 9, 10};
    xcb_set_pointer_mapping(desktop->connection(), swapped.size(), swapped.data());
    desktop->settle();
    desktop->click(1);
    ASSERT_TRUE(waitForEvents(2));
    EXPECT_EQ(events[0].button, MouseButton::Right);
}

TEST_F(PointerTest, HearsClicksWhileAnotherProgramHoldsThePointer) {
    const auto cookie = xcb_grab_pointer(desktop->connection(), 0, desktop->root(), XCB_EVENT_MASK_BUTTON_PRESS,
                                         XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, 0);
    std::free(xcb_grab_pointer_reply(desktop->connection(), cookie, nullptr));
    desktop->click(1);
    EXPECT_TRUE(waitForEvents(2));
}

TEST_F(PointerTest, FallsSilentWithItsTimer) {
    desktop->click(1);
    runFor(loop, 0.05_s); // the click waits in the loop or has been told
    events.clear();
    desktop->click(1);
    monitor = {};
    desktop->click(1);
    runFor(loop, 0.1_s);
    EXPECT_TRUE(events.empty());
}

TEST_F(PointerTest, SeesThePointerChangeOverAWindowAndBack) {
    const xcb_window_t plain = desktop->openWindow({0, 0, 400, 400}, 0x808080);
    const xcb_window_t text = desktop->openWindow({400, 0, 400, 400}, 0xf0f0f0);
    desktop->setPointer(plain, 68);
    desktop->setPointer(text, kTextGlyph);
    desktop->movePointer(100, 100);
    const auto first = pointer->shape();
    const auto firstIdentity = pointer->shapeIdentity();
    desktop->movePointer(500, 100);
    EXPECT_NE(pointer->shapeIdentity(), firstIdentity);
    const auto second = pointer->shape();
    desktop->movePointer(101, 100);
    EXPECT_EQ(pointer->shapeIdentity(), firstIdentity);

    ASSERT_TRUE(first && second);
    EXPECT_EQ(pointer->shape()->identity, first->identity);
    EXPECT_NE(first->image, second->image);
    EXPECT_EQ(second->image.pixels.size(),
              static_cast<std::size_t>(second->image.size.width * second->image.size.height * 4));
    EXPECT_TRUE(std::ranges::any_of(second->image.pixels, [](std::uint8_t byte) { return byte == 0xff; }));
    EXPECT_GT(second->hotSpotY, 0);
}

TEST_F(PointerTest, IsSilentWhenTheServerHasGone) {
    display.kill();
    EXPECT_FALSE(pointer->location());
    EXPECT_FALSE(pointer->shape());
    monitor = {};
}

TEST(ServerClockTest, FindsTheSmallestDelayAndOutlivesTheWrap) {
    ServerClock clock;
    EXPECT_EQ(clock.hostTime(0xfffffff0U, HostTime(100)), HostTime(100));           // delay unknown yet
    EXPECT_NEAR(clock.hostTime(0x00000054U, HostTime(100.1)).value, 100.1, 1e-9);   // 100 ms later, past the wrap
    EXPECT_NEAR(clock.hostTime(0x00000054U, HostTime(100.09)).value, 100.09, 1e-9); // came faster: a better guess
    EXPECT_NEAR(clock.hostTime(0x000000b8U, HostTime(100.4)).value, 100.19, 1e-9);  // late, but stamped in time
}

} // namespace morvelin
