#include <numbers>

#include <gtest/gtest.h>

#include "Tracks.h"
#include "timeline/LiveFocusDetector.h"
#include "timeline/TapTapDetector.h"

namespace morvelin {
namespace {

using test::moveAt;
using test::pressAt;

constexpr double kFrame = 1.0 / 30;
constexpr double kPi = std::numbers::pi;

/// Steps of 0.02 from the middle, each turned by the given angle against the one before.
std::vector<CursorEvent> turning(const std::vector<double>& turns, double start = 0) {
    double x = 0.5;
    double y = 0.5;
    double heading = 0;
    std::vector<CursorEvent> events{moveAt(start, x, y)};
    const auto step = [&] {
        x += 0.02 * std::cos(heading);
        y += 0.02 * std::sin(heading);
        events.push_back(moveAt(start + kFrame * static_cast<double>(events.size()), x, y));
    };
    step();
    for (const double turn : turns) {
        heading += turn;
        step();
    }
    return events;
}

std::vector<double> turns(int count, double each) { return std::vector<double>(static_cast<std::size_t>(count), each); }

std::vector<double> operator+(std::vector<double> a, const std::vector<double>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

std::size_t focusCount(const std::vector<CursorEvent>& events) { return FocusDetector().detect(events).size(); }

TEST(FocusDetector, CountsTurning) {
    const double enough = 4 * kPi - 0.6;
    struct Case {
        const char* what;
        std::vector<double> turns;
        std::size_t detections;
    };
    for (const Case& c : {
             Case{"just enough", turns(30, enough / 30), 1},
             {"the other way round", turns(30, -enough / 30), 1},
             {"one step short", turns(29, enough / 30), 0},
             {"exactly one circle", turns(20, kPi / 10), 0},
             {"nine moves", turns(7, 1.72), 1},
             {"eight moves never", turns(6, 2.0), 0},
             {"0.17 back is forgiven, and counted", turns(20, 0.4) + turns(1, -0.17) + turns(11, 0.4), 1},
             {"counted: so this is not enough", turns(20, 0.4) + turns(1, -0.17) + turns(10, 0.4), 0},
             {"0.18 back starts anew", turns(20, 0.4) + turns(1, -0.18) + turns(11, 0.4), 0},
             {"and then needs it all", turns(20, 0.4) + turns(1, -0.18) + turns(30, 0.4), 1},
         })
        EXPECT_EQ(focusCount(turning(c.turns)), c.detections) << c.what;
}

TEST(FocusDetector, StartsAnewAfterAClickAPauseOrTooLong) {
    const auto gesture = turns(30, 0.4);
    auto events = turning(gesture);
    events.push_back(pressAt(0.5));
    EXPECT_EQ(focusCount(events), 0U) << "a click in it";

    const auto again = turning(gesture, 5);
    events.insert(events.begin(), again.begin(), again.end());
    const auto found = FocusDetector().detect(events);
    ASSERT_EQ(found.size(), 1U) << "events in any order, the gesture made anew after the click";
    EXPECT_EQ(found[0].startTime, SourceTime(5_s));

    const auto stretched = [&](std::size_t pauseAt, double pause, double slowness) {
        auto slow = turning(gesture);
        for (std::size_t i = 0; i < slow.size(); ++i)
            slow[i].timestamp = SourceTime(slow[i].timestamp.value * slowness);
        auto still = slow[pauseAt];
        for (std::size_t i = pauseAt + 1; i < slow.size(); ++i) slow[i].timestamp += Seconds(pause);
        still.timestamp += Seconds(pause);
        slow.push_back(still);
        return focusCount(slow);
    };
    EXPECT_EQ(stretched(15, 0.09, 1), 1U);
    EXPECT_EQ(stretched(15, 0.1, 1), 0U) << "0.1 s of stillness";
    EXPECT_EQ(stretched(15, 0, 2.9), 1U) << "just below 3 s";
    EXPECT_EQ(stretched(15, 0, 2.91), 0U) << "just above 3 s";
}

TEST(FocusDetector, AReversalBeginsAGestureAtTheStepBefore) {
    const auto found = FocusDetector().detect(turning(turns(10, 0.02) + turns(1, -0.5) + turns(30, -0.4)));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_NEAR(found[0].startTime.value, 11 * kFrame, 1e-9);
    EXPECT_LT(found[0].rect.width, 0.15) << "what came before is no part of the zone";
}

TEST(FocusDetector, MarksTheCircledZoneInsideTheCapture) {
    const auto circle = [](double centerX, double radius) {
        std::vector<CursorEvent> events;
        for (int i = 0; i < 90; ++i)
            events.push_back(
                moveAt(i * kFrame, centerX + radius * std::cos(i * 0.3), 0.5 + radius * std::sin(i * 0.3)));
        return FocusDetector().detect(events);
    };
    const auto found = circle(0.4, 0.1);
    ASSERT_EQ(found.size(), 2U) << "four circles are two gestures";
    EXPECT_NEAR(found[0].center.x, 0.4, 0.002);
    EXPECT_NEAR(found[0].rect.x, 0.28, 0.003);
    EXPECT_NEAR(found[0].rect.width, 0.24, 0.005) << "a tenth of the box on each side";
    EXPECT_LT(found[0].endTime, found[1].startTime);

    const NormalizedRect atTheEdge = circle(0.95, 0.05)[0].rect;
    EXPECT_NEAR(atTheEdge.x + atTheEdge.width, 1, 1e-12);
    EXPECT_TRUE(circle(0.5, 0.009).empty()) << "smaller than any zone";
    EXPECT_TRUE(circle(0.5, 0.31).empty()) << "larger than any zone";
}

/// A wag of runs of the given widths, right first, five samples each, that climbs by `rise` in its first four. The
/// press just before makes it begin at `start`.
std::vector<CursorEvent> wag(double start, double left, const std::vector<double>& widths, double rise = 0) {
    std::vector<CursorEvent> events{pressAt(start - 0.001), moveAt(start, left, 0.5)};
    double x = left;
    double climbed = 0;
    double t = start;
    double sign = 1;
    for (const double width : widths) {
        for (int i = 0; i < 5; ++i) {
            x += sign * width / 5;
            climbed += climbed < 19.5 ? 1 : 0;
            events.push_back(moveAt(t += 0.03, x, 0.5 + rise * climbed / 20));
        }
        sign = -sign;
    }
    return events;
}

std::vector<TapTapDetector::Detection> tapTaps(const std::vector<CursorEvent>& events) {
    return TapTapDetector().detect(events);
}

TEST(TapTapDetector, CountsSwings) {
    struct Case {
        const char* what;
        std::vector<double> widths;
        double rise;
        std::optional<double> start; ///< of the detection
    };
    for (const Case& c : {
             Case{"four swings and a turn", {0.1, 0.1, 0.1, 0.1, 0.1}, 0, 0.0},
             {"not yet turned", {0.1, 0.1, 0.1, 0.1}, 0, {}},
             {"swings as short as they may be", {0.02, 0.02, 0.02, 0.02, 0.02}, 0, 0.0},
             {"too short to be swings", {0.019, 0.019, 0.019, 0.019, 0.019}, 0, {}},
             {"as wide as it may be", {0.45, 0.45, 0.45, 0.45, 0.45}, 0, 0.0},
             {"too wide", {0.46, 0.46, 0.46, 0.46, 0.46}, 0, {}},
             {"0.4 wide it may rise by 0.08", {0.4, 0.4, 0.4, 0.4, 0.4}, 0.08, 0.0},
             {"and no more", {0.4, 0.4, 0.4, 0.4, 0.4}, 0.081, {}},
             {"0.1 wide it may rise by 0.05", {0.1, 0.1, 0.1, 0.1, 0.1}, 0.05, 0.0},
             {"and no more", {0.1, 0.1, 0.1, 0.1, 0.1}, 0.051, {}},
             {"a short run ends it, and the next begins anew", {0.1, 0.01, 0.1, 0.1, 0.1, 0.1, 0.1}, 0, 0.33},
             {"a short first run does not count", {0.01, 0.1, 0.1, 0.1, 0.1, 0.1}, 0, 0.0},
         }) {
        const auto found = tapTaps(wag(0, 0.3, c.widths, c.rise));
        ASSERT_EQ(found.size(), c.start ? 1U : 0U) << c.what;
        if (c.start) { EXPECT_NEAR(found[0].startTime.value, *c.start, 1e-9) << c.what; }
    }
}

TEST(TapTapDetector, TakesTheZoneFromTheSwingsButNotTheWayThere) {
    // The way to the spot may bulge; its ends count, as the point of reset and as the first turning point.
    auto events = wag(0, 0.8, {0.14, 0.12, 0.1, 0.1, 0.1});
    events[4].y = 0.9;
    const auto found = tapTaps(events);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_NEAR(found[0].center.x, 0.87, 1e-9);
    EXPECT_NEAR(found[0].rect.x, 0.779, 1e-9);
    EXPECT_NEAR(found[0].rect.width, 0.182, 1e-9);
    EXPECT_NEAR(found[0].rect.height, 0.02, 1e-9);

    events.push_back(pressAt(0.2));
    EXPECT_TRUE(tapTaps(events).empty()) << "a click in it";
}

TEST(TapTapDetector, ReportsARepeatOnOneSpotOnce) {
    const std::vector<double> widths(5, 0.1);
    struct Case {
        double after, left;
        std::size_t detections;
    };
    for (const Case& c : {Case{1.9, 0.3, 1}, {2.0, 0.3, 2}, {1.9, 0.37, 1}, {1.9, 0.38, 2}}) {
        auto events = wag(0, 0.3, widths);
        const auto second = wag(c.after, c.left, widths);
        events.insert(events.end(), second.begin(), second.end());
        EXPECT_EQ(tapTaps(events).size(), c.detections) << c.after << " " << c.left;
    }
}

/// Noise with gestures strewn in; now and then unsorted, repeated or pressed.
std::vector<CursorEvent> randomTrack(test::Random& random) {
    std::vector<CursorEvent> events;
    double t = 0;
    for (int part = random.count(0, 6); part > 0; --part) {
        const double x = random.number(0, 1);
        const double y = random.number(0, 1);
        const double size = random.number(0, 0.2);
        const int kind = random.count(0, 2);
        for (int i = random.count(0, 80); i > 0; --i) {
            t += random.once(20) ? 0 : kFrame;
            const double angle = kind == 0 ? i * 0.4 : random.number(0, 2 * kPi);
            const double height = kind == 1 ? 0.1 : 1;
            events.push_back(moveAt(t, std::clamp(x + size * std::cos(angle), 0.0, 1.0),
                                    std::clamp(y + height * size * std::sin(angle), 0.0, 1.0)));
            if (random.once(60)) events.push_back(pressAt(t += 0.001));
        }
    }
    return events;
}

TEST(Detectors, SurviveAnyTrackAndMarkOnlyTheCapture) {
    test::Random random(31);
    for (int round = 0; round < 300; ++round) {
        auto events = randomTrack(random);
        if (random.once(4)) std::shuffle(events.begin(), events.end(), random.engine());
        if (random.once(8)) events.push_back(moveAt(random.number(-1, 1) * 1e300, 1e300, -1e300));
        const auto check = [](const auto& found) {
            for (std::size_t i = 0; i < found.size(); ++i) {
                const NormalizedRect& rect = found[i].rect;
                ASSERT_TRUE(rect.x >= 0 && rect.y >= 0 && rect.x + rect.width <= 1 + 1e-12 &&
                            rect.y + rect.height <= 1 + 1e-12);
                if (i > 0) { ASSERT_LT(found[i - 1].startTime, found[i].startTime); }
            }
        };
        check(FocusDetector().detect(events));
        check(tapTaps(events));
    }
}

TEST(LiveFocusCollector, FindsWhatTheWholeTrackHolds) {
    test::Random random(32);
    std::size_t total = 0;
    for (int round = 0; round < 300; ++round) {
        const auto events = randomTrack(random);
        SeededIdSource ids(1);
        LiveFocusCollector collector;
        for (std::size_t seen = 0; seen < events.size();) {
            seen = std::min(events.size(), seen + static_cast<std::size_t>(random.count(0, 40)));
            collector.collect(std::span(events).first(seen), ids);
        }
        const auto whole = FocusDetector().detect(events);
        ASSERT_EQ(collector.focuses().size(), whole.size());
        for (std::size_t i = 0; i < whole.size(); ++i) {
            const FocusKeyframe& focus = collector.focuses()[i];
            EXPECT_EQ(focus.rect, whole[i].rect);
            EXPECT_EQ(focus.startTime.value, whole[i].startTime.value);
            EXPECT_NEAR((focus.endTime - focus.startTime).value, 3, 1e-9);
        }
        total += whole.size();
    }
    EXPECT_GT(total, 50U) << "the tracks do hold gestures";
}

} // namespace
} // namespace morvelin
