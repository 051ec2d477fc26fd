#include <gtest/gtest.h>

#include "Tracks.h"
#include "timeline/TimelineKeyframes.h"

namespace morvelin {
namespace {

using enum TimelineKeyframeSource;

/// Two circles from second 2 on, and a wag from second 12 on.
std::vector<CursorEvent> gestures() {
    std::vector<CursorEvent> events;
    for (int i = 0; i < 45; ++i)
        events.push_back(test::moveAt(2 + i / 30.0, 0.3 + 0.1 * std::cos(i * 0.3), 0.3 + 0.1 * std::sin(i * 0.3)));
    for (int i = 0; i < 30; ++i)
        events.push_back(test::moveAt(12 + i / 30.0, 0.7 + (i % 6 < 3 ? i % 3 : 3 - i % 3) * 0.03, 0.6));
    return events;
}

class TimelineKeyframesTest : public testing::Test {
protected:
    TimelineKeyframes make(TimelineKeyframes existing, const std::vector<CursorEvent>& events, Seconds duration = 20_s,
                           TimelineKeyframeSource source = GenerateFromCursorEvents) {
        return timelineKeyframes(source, std::move(existing), events, duration, {}, ids);
    }

    static TimelineKeyframes makeFull() {
        FocusKeyframe focus;
        focus.startTime = 1_s;
        focus.endTime = 9_s;
        TapTapKeyframe tapTap;
        tapTap.startTime = 2_s;
        tapTap.endTime = 8_s;
        return {{test::zoomKey(3, 1, 2)}, {test::positionKey(4, 0.1, 0.2)}, {focus}, {tapTap}};
    }

    const TimelineKeyframes full = makeFull();
    SeededIdSource ids{1};
};

TEST_F(TimelineKeyframesTest, GesturesMakeCuesAndAttractZooms) {
    const TimelineKeyframes made = make({}, gestures());
    ASSERT_EQ(made.focuses.size(), 1U);
    EXPECT_EQ(made.focuses[0].startTime, EditTime(2_s));
    EXPECT_EQ(made.focuses[0].endTime, EditTime(5_s));
    EXPECT_EQ(made.focuses[0].fadeOutDuration, 0.5_s);
    ASSERT_EQ(made.tapTaps.size(), 1U);
    EXPECT_NEAR((made.tapTaps[0].endTime - made.tapTaps[0].startTime).value, 0.9, 1e-9);
    EXPECT_EQ(made.tapTaps[0].size, 0.12);
    ASSERT_EQ(made.zoom.size(), 5U) << "the base, and in and out twice";
    EXPECT_NEAR(made.zoom[1].startTime.value, 0.6, 1e-9);
    EXPECT_NEAR(made.position[1].targetX, 0.3, 0.01);
    EXPECT_EQ(made.position[3].targetX, made.tapTaps[0].x);

    EXPECT_EQ(make({}, gestures(), 4_s).focuses[0].endTime, EditTime(4_s)) << "limited to the take";
    EXPECT_EQ(make({}, gestures(), 0_s).focuses[0].endTime, EditTime(5_s)) << "unless its length is unknown";
}

TEST_F(TimelineKeyframesTest, KeepsWhatTheCallerHas) {
    EXPECT_EQ(make(full, gestures(), 4_s, PreserveProject), full);
    for (const auto& events : {gestures(), std::vector<CursorEvent>()}) {
        const TimelineKeyframes made = make(full, events, 5_s);
        EXPECT_EQ(made.zoom, full.zoom);
        EXPECT_EQ(made.position, full.position);
        ASSERT_EQ(made.focuses.size(), 1U);
        EXPECT_EQ(made.focuses[0].endTime, EditTime(5_s));
        EXPECT_EQ(made.tapTaps[0].endTime, EditTime(5_s));
    }
    TimelineKeyframes live;
    live.focuses = full.focuses;
    const TimelineKeyframes made = make(live, gestures());
    EXPECT_EQ(made.focuses, live.focuses);
    EXPECT_EQ(made.tapTaps.size(), 1U) << "each list is its own choice";
    EXPECT_EQ(made.zoom.size(), 5U);
}

TEST_F(TimelineKeyframesTest, WithoutEventsOnlyBaselinesRemain) {
    const TimelineKeyframes nothing = make({}, {});
    EXPECT_EQ(nothing, TimelineKeyframes{});
    const TimelineKeyframes filled = withBaselineKeys(nothing, ids);
    ASSERT_EQ(filled.zoom.size(), 1U);
    EXPECT_TRUE(filled.zoom[0].isManual);
    EXPECT_EQ(filled.position.size(), 1U);
    EXPECT_EQ(withBaselineKeys(filled, ids), filled);
}

} // namespace
} // namespace morvelin
