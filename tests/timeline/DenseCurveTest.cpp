#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tracks.h"
#include "timeline/ClampCenter.h"
#include "timeline/DenseCurve.h"
#include "timeline/FragmentMap.h"
#include "timeline/PositionKeys.h"

namespace morvelin {
namespace {

using test::fragment;
using test::moveAt;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::Pointwise;

std::vector<double> gridOf(const std::vector<CursorEvent>& events, std::vector<VideoFragment> fragments) {
    std::vector<double> times;
    for (const auto& frame : denseFrames({}, {}, events, FragmentMap(std::move(fragments))))
        times.push_back(frame.time.value);
    return times;
}

TEST(DenseFrames, FollowThePointerAtLeastATenthOfASecondApart) {
    std::vector<CursorEvent> events;
    for (const double t : {0.35, -1.0, 0.05, 0.1, 0.15, 0.2, 0.3, 7.0, 1.0, 1.05}) events.push_back(moveAt(t, 0, 0));
    events.push_back(test::pressAt(0.6));
    struct Case {
        std::vector<VideoFragment> fragments;
        std::vector<double> grid;
    };
    for (const Case& c : {
             Case{{}, {0, 0.1, 0.2, 0.3, 1, 7}},
             {{fragment(0, 0, 2)}, {0, 0.1, 0.2, 0.3, 1, 2}},
             {{fragment(0, 0, 1.05)}, {0, 0.1, 0.2, 0.3, 1, 1.05}},
             {{fragment(1, 0, 0.2), fragment(0, 0.9, 7, 10)}, {0, 0.61, 0.71, 0.81}},
             {{fragment(0, 20, 21)}, {0, 1}},
         })
        EXPECT_THAT(gridOf(events, c.fragments), Pointwise(DoubleNear(1e-9), c.grid));
    EXPECT_THAT(gridOf({}, {}), ElementsAre(0));
}

TEST(SampleDenseFrames, AnswersOutsideTheCurve) {
    EXPECT_EQ(sampleDenseFrames({}, 3_s), (DenseZoomFrame{3_s, 1, 0.5, 0.5}));
    const std::vector<DenseZoomFrame> frames{{1_s, 2, 0.1, 0.2}, {2_s, 3, 0.3, 0.4}};
    EXPECT_EQ(sampleDenseFrames(std::span(frames).first(1), 9_s), frames[0]);
    EXPECT_EQ(sampleDenseFrames(frames, 0_s), frames[0]) << "its own time included";
    EXPECT_EQ(sampleDenseFrames(frames, 9_s), frames[1]);
}

TEST(SampleDenseFrames, InterpolatesByTheWeightedHarmonicMeanOfSlopes) {
    const std::vector<DenseZoomFrame> frames{{0_s, 1, 0.5, 0}, {1_s, 2, 0.5, 0.1}, {3_s, 6, 0.5, 0.3}};
    const DenseZoomFrame frame = sampleDenseFrames(frames, 2_s);
    // Slopes 1 and 2 over 1 s and 2 s meet at (5 + 4) / (5 / 1 + 4 / 2) = 9 / 7.
    EXPECT_NEAR(frame.zoom, 2 * 0.5 + 2 * (9.0 / 7) * 0.125 + 6 * 0.5 - 2 * 2 * 0.125, 1e-12);
    EXPECT_NEAR(frame.centerX, 0.5, 1e-12);
    EXPECT_NEAR(frame.centerY, 0.2, 1e-12) << "a straight line stays one";
    EXPECT_EQ(frame.time, EditTime(2_s));
}

/// The curve between two samples lies between their values, whichever way time runs.
TEST(SampleDenseFrames, NeverOvershoots) {
    test::Random random(5);
    for (int round = 0; round < 100; ++round) {
        std::vector<DenseZoomFrame> frames;
        double t = 0;
        for (int i = random.count(2, 20); i > 0; --i) {
            frames.push_back({EditTime(t), random.tenth(1, 2), random.number(0, 1), random.once(2) ? 0.5 : 0.7});
            t += random.number(0.1, 3);
        }
        std::vector<DenseZoomFrame> mirrored(frames.rbegin(), frames.rend());
        for (DenseZoomFrame& frame : mirrored) frame.time = EditTime(-frame.time.value);

        for (std::size_t i = 0; i + 1 < frames.size(); ++i) {
            const EditTime at = frames[i].time + (frames[i + 1].time - frames[i].time) * random.number(0, 1);
            const DenseZoomFrame frame = sampleDenseFrames(frames, at);
            const DenseZoomFrame reversed = sampleDenseFrames(mirrored, EditTime(-at.value));
            for (const auto value : {&DenseZoomFrame::zoom, &DenseZoomFrame::centerX, &DenseZoomFrame::centerY}) {
                const auto [low, high] = std::minmax({frames[i].*value, frames[i + 1].*value});
                ASSERT_GE(frame.*value, low - 1e-12);
                ASSERT_LE(frame.*value, high + 1e-12);
                ASSERT_NEAR(frame.*value, reversed.*value, 1e-12);
            }
        }
    }
}

TEST(DenseFrames, StayInsideTheClampOfAnyTrack) {
    test::Random random(8);
    SeededIdSource ids(1);
    for (int round = 0; round < 100; ++round) {
        const auto zooms = test::randomZooms(random, 10);
        std::vector<PositionKeyframe> positions;
        for (int i = random.count(0, 10); i > 0; --i)
            positions.push_back(test::positionKey(random.tenth(0, 20), random.number(-1, 2), random.number(0, 1)));
        const double padding = random.number(0, 0.2);
        positions = refitPositionKeys(positions, zooms, padding);
        const auto pins = ephemeralPositionKeys(positions, zooms, padding, 22_s, ids);
        positions.insert(positions.end(), pins.begin(), pins.end());

        std::vector<CursorEvent> events;
        for (int i = 0; i < 200; ++i) events.push_back(moveAt(random.number(0, 22), 0, 0));
        const auto frames = denseFrames(zooms, positions, events, FragmentMap({fragment(0, 0, 22)}));
        ASSERT_TRUE(std::ranges::is_sorted(frames, {}, &DenseZoomFrame::time));
        ASSERT_EQ(frames.back().time, EditTime(22_s));
        double greatest = 1;
        for (const auto& zoom : zooms) greatest = std::max(greatest, zoom.zoomFactor);
        for (const auto& frame : frames) {
            const NormalizedPoint center = clampCenter({frame.centerX, frame.centerY}, greatest, padding);
            ASSERT_NEAR(center.x, frame.centerX, 1e-9);
            ASSERT_NEAR(center.y, frame.centerY, 1e-9);
            ASSERT_LE(frame.zoom, greatest + 1e-12);
            ASSERT_GE(frame.zoom, 1 - 1e-12);
        }
    }
}

} // namespace
} // namespace morvelin
