#include "render/CursorPath.h"

#include <cmath>

#include <gtest/gtest.h>

namespace morvelin {
namespace {

constexpr CaptureSize kScreen{1920, 1080};

CursorEvent sample(double t, double x, double y, CursorEventType type = CursorEventType::Move,
                   MouseButton button = MouseButton::Left) {
    CursorEvent event{SourceTime(t), x, y, type, {}, {}};
    if (type != CursorEventType::Move) event.button = button;
    return event;
}

CursorEvent press(double t, double x, double y) { return sample(t, x, y, CursorEventType::MouseDown); }
CursorEvent release(double t, double x, double y) { return sample(t, x, y, CursorEventType::MouseUp); }

NormalizedPoint at(const CursorPath& path, double t) {
    return path.position(SourceTime(t)).value_or(NormalizedPoint{-1, -1});
}

/// A hand that goes from left to right in `seconds`, 30 samples a second, wobbling by `wobble`.
std::vector<CursorEvent> sweep(double seconds, double wobble = 0) {
    std::vector<CursorEvent> events;
    for (int i = 0; i <= seconds * 30; ++i) {
        const double s = i / (seconds * 30);
        events.push_back(sample(i / 30.0, 0.1 + 0.8 * s, 0.5 + (i % 2 == 0 ? wobble : -wobble)));
    }
    return events;
}

TEST(CursorPath, WithoutSmoothingItIsTheTrackItself) {
    const std::vector<CursorEvent> events{sample(1, 0.2, 0.2), sample(2, 0.4, 0.6), sample(2, 0.5, 0.5),
                                          sample(3, 0.5, 0.9)};
    const CursorPath path = CursorPath::make(events, 0, kScreen);
    struct Case {
        double t, x, y;
    };
    // The later of the two samples at 2 s counts; outside the track its ends hold.
    for (const Case& c :
         {Case{0, 0.2, 0.2}, {1, 0.2, 0.2}, {1.5, 0.35, 0.35}, {2, 0.5, 0.5}, {2.25, 0.5, 0.6}, {9, 0.5, 0.9}}) {
        EXPECT_NEAR(at(path, c.t).x, c.x, 1e-12) << c.t;
        EXPECT_NEAR(at(path, c.t).y, c.y, 1e-12) << c.t;
    }
    EXPECT_FALSE(CursorPath::make({}, 0.5, kScreen).position(SourceTime(0)));
    EXPECT_EQ(at(CursorPath::make(std::vector{sample(3, 0.3, 0.7)}, 1, kScreen), 0), (NormalizedPoint{0.3, 0.7}));
}

TEST(CursorPath, SmoothingTakesTheTrembleOutAndKeepsTheWay) {
    const CursorPath path = CursorPath::make(sweep(4, 0.01), 0.5, kScreen);
    for (double t = 0.5; t < 3.5; t += 0.01) {
        EXPECT_NEAR(at(path, t).x, 0.1 + 0.8 * t / 4, 1e-3) << t;
        EXPECT_NEAR(at(path, t).y, 0.5, 1e-4) << t;
    }
}

TEST(CursorPath, TheFilterIsTheGaussianOfItsSigma) {
    // A step that is one sample wide: the filtered path is the bell of the smoothing's sigma (0.15 s at one half).
    std::vector<CursorEvent> events;
    for (int i = 0; i <= 240; ++i) events.push_back(sample(i / 60.0, i == 120 ? 1 : 0, 0));
    const CursorPath path = CursorPath::make(events, 0.5, kScreen);
    for (const double away : {0.0, 0.05, 0.1, 0.3})
        EXPECT_NEAR(at(path, 2 + away).x / at(path, 2).x, std::exp(-away * away / (2 * 0.15 * 0.15)), 1e-9) << away;
    EXPECT_EQ(at(path, 2 + 0.5).x, 0) << "the window ends at three sigmas";
}

TEST(CursorPath, LandsOnTheClickInAFastFlick) {
    for (const double clickTime : {2.0, 2.0041, 2.0125}) {
        std::vector<CursorEvent> events = sweep(4);
        for (CursorEvent& event : events)
            event.y = 0.5 + 0.45 * std::exp(-std::pow((event.timestamp.value - clickTime) / 0.05, 2));
        const NormalizedPoint place{0.5, 0.95};
        events.push_back(press(clickTime, place.x, place.y)); // out of order on purpose: the track is sorted
        const CursorPath path = CursorPath::make(events, 1, kScreen);
        EXPECT_NEAR(at(path, clickTime).x, place.x, 1e-9) << clickTime;
        EXPECT_NEAR(at(path, clickTime).y, place.y, 1e-9) << clickTime;
        for (double t = 1; t < 3; t += 1.0 / 60)
            EXPECT_LT(std::abs(at(path, t + 1.0 / 60).y - at(path, t).y), 0.05) << "jumps at " << t;
    }
}

TEST(CursorPath, HoldsStillBetweenClicksOnOneSpot) {
    std::vector<CursorEvent> events = sweep(2);
    events.push_back(press(2.05, 0.9, 0.5));
    events.push_back(release(2.06, 0.9, 0.5));
    events.push_back(sample(2.1, 0.9005, 0.5005)); // trembles by a point
    events.push_back(press(2.3, 0.90005, 0.5));
    events.push_back(release(2.4, 0.9, 0.5));
    for (int i = 1; i < 60; ++i) events.push_back(sample(2.4 + i / 30.0, 0.9 - i * 0.01, 0.5));
    const CursorPath path = CursorPath::make(events, 1, kScreen);
    for (double t = 2.05; t <= 2.4; t += 0.005) EXPECT_EQ(at(path, t), (NormalizedPoint{0.9, 0.5})) << t;
}

TEST(CursorPath, FollowsTheHandThroughADrag) {
    // A corner in the way: smoothed wide it is cut off, in a drag it is kept.
    const auto corner = [](double t) {
        return NormalizedPoint{t < 2 ? 0.2 + 0.2 * t : 0.6, t < 2 ? 0.3 : 0.3 + 0.2 * (t - 2)};
    };
    std::vector<CursorEvent> events;
    for (int i = 0; i <= 120; ++i) events.push_back(sample(i / 30.0, corner(i / 30.0).x, corner(i / 30.0).y));
    const CursorPath wide = CursorPath::make(events, 1, kScreen);
    EXPECT_GT(std::hypot(at(wide, 2).x - 0.6, at(wide, 2).y - 0.3), 0.02);

    events.push_back(press(1, corner(1).x, corner(1).y));
    events.push_back(release(3, corner(3).x, corner(3).y));
    const CursorPath dragged = CursorPath::make(events, 1, kScreen);
    for (double t = 1; t <= 3; t += 0.01)
        EXPECT_LT(std::hypot(at(dragged, t).x - corner(t).x, at(dragged, t).y - corner(t).y), 0.004) << t;
}

TEST(CursorHolds, ADragIsToldFromATrembleByFourPoints) {
    struct Case {
        const char* what;
        std::vector<CursorEvent> events;
        std::size_t drags;
    };
    const double four = 4.0 / 1920;
    const std::vector<Case> cases{
        {"a wiggle of three points",
         {press(1, 0.5, 0.5), sample(1.1, 0.5 + 3.0 / 1920, 0.5), release(1.2, 0.5, 0.5)},
         0},
        {"four points and back", {press(1, 0.5, 0.5), sample(1.1, 0.5 + four, 0.5), release(1.2, 0.5, 0.5)}, 1},
        {"moved only at the release", {press(1, 0.5, 0.5), release(1.2, 0.5, 0.5 + 4.0 / 1080)}, 1},
        {"never released", {press(1, 0.5, 0.5), sample(1.1, 0.9, 0.5)}, 0},
        {"another button's release",
         {press(1, 0.5, 0.5), sample(1.2, 0.9, 0.5),
          sample(1.3, 0.9, 0.5, CursorEventType::MouseUp, MouseButton::Right)},
         0},
        {"a click after a lost release", {press(1, 0.1, 0.1), press(2, 0.5, 0.5), release(2.1, 0.5, 0.5)}, 0}};
    for (const Case& c : cases) EXPECT_EQ(cursorDrags(c.events, kScreen).size(), c.drags) << c.what;
}

TEST(CursorHolds, PinsOfOnePlaceJoinUnlessThePointerWentAway) {
    struct Case {
        const char* what;
        std::vector<CursorEvent> events;
        std::vector<CursorHold> pins;
    };
    const auto hold = [](double start, double end, double x) {
        return CursorHold{SourceTime(start), SourceTime(end), x, 0.5};
    };
    const std::vector<Case> cases{
        {"a click", {press(1, 0.5, 0.5), release(1.1, 0.5, 0.5)}, {hold(1, 1.1, 0.5)}},
        {"a double click", {press(1, 0.5, 0.5), release(1.1, 0.5, 0.5), press(1.2, 0.5001, 0.5)}, {hold(1, 1.2, 0.5)}},
        {"two places", {press(1, 0.5, 0.5), release(1.1, 0.6, 0.5)}, {hold(1, 1, 0.5), hold(1.1, 1.1, 0.6)}},
        {"away and back",
         {press(1, 0.5, 0.5), release(1.1, 0.5, 0.5), sample(1.5, 0.9, 0.5), press(2, 0.5, 0.5)},
         {hold(1, 1.1, 0.5), hold(2, 2, 0.5)}},
        {"away by four points",
         {press(1, 0.5, 0.5), sample(1.5, 0.5 + 4.0 / 1920, 0.5), press(2, 0.5, 0.5)},
         {hold(1, 2, 0.5)}}};
    for (const Case& c : cases) EXPECT_EQ(cursorPins(c.events, kScreen), c.pins) << c.what;
}

} // namespace
} // namespace morvelin
