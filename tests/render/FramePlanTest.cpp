// What one frame shows, as a pure function of instruction and time.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CompositorScenes.h"
#include "render/AccentColor.h"
#include "render/FramePlan.h"

namespace morvelin {
namespace {

using namespace test;

constexpr PixelSize kFullHD{1920, 1080};

FramePlan planAt(const CompositionInstruction& instruction, double t) {
    return framePlan(instruction, EditTime(t), {4});
}

TEST(FramePlan, RingsOpenFastAndFadeOut) {
    auto instruction = plainInstruction(kFullHD, kFullHD);
    instruction->clickPings = {{EditTime(2), 0.25, 0.5, MouseButton::Left, 1}};
    struct Case {
        double t;
        bool shows;
        double diameter, alpha;
    };
    for (const Case& c : {Case{1.999, false, 0, 0},
                          {2.0, true, 81 * 0.05, 0.9},
                          {2.275, true, 81 * (0.875 * 0.95 + 0.05), 0.45},
                          {2.5499, true, 81.0, 0},
                          {2.551, false, 0, 0}}) {
        const FramePlan plan = planAt(*instruction, c.t);
        ASSERT_EQ(plan.rings.size(), c.shows ? 1U : 0U) << c.t;
        if (!c.shows) continue;
        EXPECT_NEAR(plan.rings[0].diameter, c.diameter, 0.01) << c.t;
        EXPECT_NEAR(plan.rings[0].color.alpha, c.alpha, 0.001) << c.t;
        EXPECT_NEAR(plan.rings[0].centerX, 480, 1e-6);
        EXPECT_NEAR(plan.rings[0].lineWidth, 1080 * 0.0018, 1e-9);
    }
    instruction->outputSize = {320, 180};
    EXPECT_EQ(planAt(*instruction, 2).rings[0].lineWidth, 1.5) << "a line never gets thinner";
    instruction->clickAnimationsEnabled = false;
    EXPECT_TRUE(planAt(*instruction, 2.1).rings.empty());
}

TEST(FramePlan, ADoubleClickHasASecondRing) {
    auto instruction = plainInstruction(kFullHD, kFullHD);
    for (const std::int64_t clicks : {1, 2, 3}) {
        instruction->clickPings = {{EditTime(2), 0.5, 0.5, MouseButton::Left, clicks}};
        const std::size_t both = clicks > 1 ? 2 : 1;
        EXPECT_EQ(planAt(*instruction, 2.05).rings.size(), 1U) << clicks;
        EXPECT_EQ(planAt(*instruction, 2.1).rings.size(), both) << clicks;
        EXPECT_EQ(planAt(*instruction, 2.6).rings.size(), both - 1) << "the second outlives the first";
    }
}

TEST(FramePlan, RingsHaveTheirButtonsColour) {
    auto instruction = plainInstruction(kFullHD, kFullHD);
    instruction->clickPings = {{EditTime(0), 0.5, 0.5, MouseButton::Left, 1},
                               {EditTime(0), 0.5, 0.5, MouseButton::Right, 1},
                               {EditTime(0), 0.5, 0.5, MouseButton::Other, 1}};
    const auto rings = planAt(*instruction, 0).rings;
    ASSERT_EQ(rings.size(), 3U);
    EXPECT_EQ(rings[0].color.red, kAccentColor.red);
    EXPECT_EQ(rings[1].color.blue, 0.9647);
    EXPECT_EQ(rings[2].color.green, 0.7255);

    instruction->clickAnimationColor = CodableColor{0.1, 0.2, 0.3, 0.5};
    for (const PingRing& ring : planAt(*instruction, 0).rings) {
        EXPECT_EQ(ring.color.green, 0.2);
        EXPECT_NEAR(ring.color.alpha, 0.45, 1e-9) << "a colour's own alpha multiplies";
    }
}

TEST(FramePlan, RingsFarOutsideTheViewAreLeftOut) {
    auto instruction = plainInstruction(kFullHD, kFullHD);
    instruction->denseFrames = view(2, 0.25, 0.25); // shows the upper left quarter
    for (const auto& [x, shows] : {std::pair{0.2, true}, {0.57, true}, {0.58, false}}) {
        instruction->clickPings = {{EditTime(0), x, 0.2, MouseButton::Left, 1}};
        EXPECT_EQ(planAt(*instruction, 0).rings.size(), shows ? 1U : 0U) << x;
    }
}

TEST(FramePlan, MasksHoldFromTheirStartUpToTheirEnd) {
    auto instruction = plainInstruction(kFullHD, kFullHD);
    instruction->maskKeyframes = {mask({0.5, 0.5, 0.25, 0.25}, 8, 1, 2), mask({0.1, 0.1, 0.1, 0.1}, 0, 1, 2)};
    for (const auto& [t, count] : {std::pair{0.99, 0U}, {1.0, 1U}, {1.99, 1U}, {2.0, 0U}})
        EXPECT_EQ(planAt(*instruction, t).masks.size(), count) << t << ": a mask without blur changes nothing";
    instruction->denseFrames = view(2, 0.9, 0.9);
    const MaskPlacement shown = planAt(*instruction, 1).masks.at(0);
    EXPECT_EQ(shown.sigma, 8) << "the blur is in output pixels at any zoom";
    EXPECT_NEAR(shown.rect.width, 960, 0.01);
    instruction->denseFrames = view(2, 0, 0);
    EXPECT_TRUE(planAt(*instruction, 1).masks.empty()) << "out of sight";
}

TEST(FramePlan, AMaskAtThePicturesEdgeReachesOverIt) {
    auto instruction = plainInstruction(kFullHD, kFullHD);
    instruction->padding = 0.05;
    instruction->maskKeyframes = {mask({0, 0.2, 1, 0.2}, 8)};
    const FramePlan plan = planAt(*instruction, 0);
    ASSERT_EQ(plan.masks.size(), 1U);
    EXPECT_LT(plan.masks[0].rect.x, plan.stage.frameRect.x - 1) << "or the edge's own pixels would show";
    EXPECT_GT(plan.masks[0].rect.right(), plan.stage.frameRect.right() + 1);
    EXPECT_NEAR(plan.masks[0].rect.y, plan.stage.frameRect.y + 0.2 * plan.stage.frameRect.height, 0.01);
}

TEST(FramePlan, ThePointerLiesWithItsHotSpotOnItsPlace) {
    auto instruction = plainInstruction({400, 224}, {800, 448});
    instruction->cursorScene = restingPointer(0.5, 0.25, 1);
    const FramePlan plan = planAt(*instruction, 0);
    ASSERT_TRUE(plan.pointer);
    EXPECT_NEAR(plan.pointer->rect.width, 40, 0.1) << "20 points of a capture 400 points wide";
    EXPECT_NEAR(plan.pointer->rect.x, 400 - 4, 0.1);
    EXPECT_NEAR(plan.pointer->rect.y, 112 - 2, 0.1);

    instruction->outputSize = {8, 4};
    EXPECT_FALSE(planAt(*instruction, 0).pointer) << "half a pixel is not drawn";
    instruction->outputSize = {800, 448};
    instruction->denseFrames = view(3, 0.9, 0.9);
    EXPECT_FALSE(planAt(*instruction, 0).pointer) << "out of sight";
}

TEST(FramePlan, ThePointerFollowsTheFragments) {
    std::vector<CursorEvent> events(2);
    events[0].x = 0;
    events[1] = {SourceTime(10), 1, 0.5, CursorEventType::Move, {}, {}};
    auto instruction = plainInstruction({400, 224}, {400, 224});
    instruction->cursorScene = pointerAlong(events, 1);
    instruction->fragments = FragmentMap({VideoFragment{UUID{}, SourceTime(2), SourceTime(3), 1, 0, {}},
                                          VideoFragment{UUID{}, SourceTime(6), SourceTime(8), 2, 1, {}}});
    for (const auto& [t, x] : {std::pair{0.5, 0.25}, {1.0, 0.6}, {1.5, 0.7}, {2.0, 0.8}, {9.0, 0.8}}) {
        const FramePlan plan = planAt(*instruction, t);
        ASSERT_TRUE(plan.pointer) << t;
        EXPECT_NEAR(plan.pointer->rect.x, x * 400 - 2, 0.1) << t;
    }
}

TEST(FramePlan, EqualPlansAreTheSameFrame) {
    auto instruction = plainInstruction(kFullHD, kFullHD);
    instruction->cursorScene = restingPointer(0.5, 0.5);
    instruction->denseFrames = {
        {EditTime(0), 1, 0.5, 0.5}, {EditTime(1), 1.75, 0.3, 0.3}, {EditTime(5), 1.75, 0.3, 0.3}};
    EXPECT_EQ(planAt(*instruction, 2.3), planAt(*instruction, 3.1)) << "a plateau";
    EXPECT_NE(planAt(*instruction, 0.5), planAt(*instruction, 0.51)) << "a ramp";
    EXPECT_NE(framePlan(*instruction, EditTime(3), {1}), framePlan(*instruction, EditTime(3), {2}));
}

} // namespace
} // namespace morvelin
