#include <gtest/gtest.h>

#include "Tracks.h"
#include "timeline/ClampCenter.h"
#include "timeline/PositionTrack.h"
#include "timeline/ZoomTrack.h"

namespace morvelin {
namespace {

using test::positionKey;
using test::zoomKey;

TEST(ClampCenter, KeepsTheViewInsideTheStage) {
    struct Case {
        NormalizedPoint center;
        double zoom, inset;
        NormalizedPoint clamped;
    };
    for (const Case& c : {Case{{0.9, 0.1}, 1, 0, {0.5, 0.5}},
                          {{0.9, 0.1}, 0.5, 0.1, {0.5, 0.5}},
                          {{0.9, 0.1}, 2, 0, {0.75, 0.25}},
                          {{0.6, 0.3}, 2, 0, {0.6, 0.3}},
                          {{1, 0}, 2, -1, {0.75, 0.25}},
                          // The stage is a quarter wider than the picture, so the view may pan over the padding.
                          {{2, -2}, 2, 0.1, {0.8125, 0.1875}},
                          {{9, -9}, 2, 0.45, {3, -2}},
                          {{9, -9}, 2, 0.49, {3, -2}}}) {
        const NormalizedPoint clamped = clampCenter(c.center, c.zoom, c.inset);
        EXPECT_NEAR(clamped.x, c.clamped.x, 1e-9) << c.zoom << " " << c.inset;
        EXPECT_NEAR(clamped.y, c.clamped.y, 1e-9) << c.zoom << " " << c.inset;
    }
}

TEST(ZoomTrack, EasesAlongRampsAndHoldsBetween) {
    const ZoomTrack track({zoomKey(6, 2, 1, ZoomTransitionType::Linear), zoomKey(2, 2, 3)});
    struct Case {
        double t, zoom;
    };
    for (const Case& c : {Case{-1, 1}, {2, 1}, {2.5, 1.3125}, {3, 2}, {4, 3}, {5, 3}, {6.5, 2.5}, {7, 2}, {9, 1}})
        EXPECT_NEAR(track.zoomAt(EditTime(c.t)), c.zoom, 1e-12) << c.t;
    EXPECT_EQ(ZoomTrack({}).zoomAt(1_s), 1);
    EXPECT_EQ(ZoomTrack({zoomKey(1, 0, 2)}).zoomAt(1_s), 2) << "a ramp without length jumps";
}

TEST(ZoomTrack, FollowsTheEarliestRampStillRunning) {
    const ZoomTrack track({zoomKey(0, 4, 3, ZoomTransitionType::Linear), zoomKey(2, 1, 1)});
    EXPECT_NEAR(track.zoomAt(2.5_s), 2.25, 1e-12);
    EXPECT_NEAR(track.zoomAt(4_s), 1, 1e-12) << "then the last one begun";
}

/// The rule word for word, by walking the keys.
double walkedMaxZoom(const ZoomTrack& track, EditTime a, EditTime b) {
    if (b < a) std::swap(a, b);
    double best = std::max(track.zoomAt(a), track.zoomAt(b));
    bool hasRunning = false;
    for (const ZoomKeyframe& key : track.keys()) {
        const EditTime end = key.startTime + std::max(key.transitionTime, Seconds(1e-9));
        hasRunning = hasRunning || end > a;
        if (!hasRunning) continue;
        if (key.startTime > b) break;
        for (const EditTime t : {key.startTime, end}) best = std::max(best, track.zoomAt(std::clamp(t, a, b)));
    }
    return best;
}

TEST(ZoomTrack, FindsTheGreatestZoomOfAnyWindow) {
    test::Random random(3);
    for (int round = 0; round < 300; ++round) {
        const ZoomTrack track(test::randomZooms(random, 8));
        for (int i = 0; i < 30; ++i) {
            const EditTime a(random.tenth(-1, 22));
            const EditTime b(random.once(5) ? a : EditTime(random.tenth(-1, 22)));
            ASSERT_EQ(track.maxZoomInWindow(a, b), walkedMaxZoom(track, a, b)) << a.value << " " << b.value;
        }
    }
}

TEST(SortRamps, OrdersRampsThatStartTogetherByLength) {
    std::vector<ZoomKeyframe> zooms{zoomKey(5, 1, 1), zoomKey(2 + 5e-10, 1, 2), zoomKey(2, 3, 3), zoomKey(2, 1, 4)};
    sortRamps(zooms);
    const double factors[] = {4, 2, 3, 1};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(zooms[i].zoomFactor, factors[i]) << i;
}

TEST(PositionTrack, MovesBySmoothstepBetweenKeys) {
    PositionKeyframe last = positionKey(3, 0.8, 0.4);
    last.targetX = 0.9;
    const PositionTrack track({last, positionKey(1, 0.2, 0.4)});
    EXPECT_EQ(track.positionAt(0_s), (NormalizedPoint{0.2, 0.4}));
    EXPECT_EQ(track.positionAt(9_s), (NormalizedPoint{0.8, 0.4}));
    EXPECT_NEAR(track.positionAt(1.5_s).x, 0.2 + 0.6 * 0.15625, 1e-12);
    EXPECT_NEAR(track.positionAt(2_s).y, 0.4, 1e-12);
    EXPECT_NEAR(track.targetAt(2_s).x, 0.55, 1e-12);
    EXPECT_EQ(PositionTrack({}).targetAt(2_s), (NormalizedPoint{0.5, 0.5}));

    const PositionTrack jump({positionKey(0, 0.1, 0), positionKey(1, 0.2, 0), positionKey(1, 0.5, 0),
                              positionKey(1 + 8e-10, 0.7, 0), positionKey(2, 1, 0)});
    EXPECT_NEAR(jump.positionAt(EditTime(1 + 1e-10)).x, 0.7, 1e-12) << "of keys at one time the last one holds it";
}

} // namespace
} // namespace morvelin
