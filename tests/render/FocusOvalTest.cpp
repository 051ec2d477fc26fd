#include "render/FocusOval.h"

#include <gtest/gtest.h>

namespace morvelin {
namespace {

TEST(FocusOval, WobblesByItsSeed) {
    // Worked out by hand from the published generator.
    struct Case {
        std::uint64_t seed;
        std::size_t index;
        PathPoint place;
    };
    for (const Case& c : {Case{1, 0, {57.08105265, 53.72954635}},
                          {1, 18, {82.05995594, 79.64687977}},
                          {1, 72, {57.08105265, 53.72954635}},
                          {0x0102030405060708, 18, {70.42064857, 75.91547282}}}) {
        const auto ring = handDrawnOval({50, 40, 100, 40}, c.seed, 72);
        ASSERT_EQ(ring.size(), 73U);
        EXPECT_NEAR(ring[c.index].x, c.place.x, 1e-6) << c.seed << " " << c.index;
        EXPECT_NEAR(ring[c.index].y, c.place.y, 1e-6) << c.seed << " " << c.index;
    }
    EXPECT_TRUE(handDrawnOval({0, 0, 10, 10}, 1, 7).empty());
    EXPECT_TRUE(handDrawnOval({0, 0, 0, 10}, 1, 72).empty());
}

TEST(FocusOval, AnIdOfZerosHasASeedOfItsOwnAndOthersTheirFirstBytes) {
    CompositionInstruction instruction;
    FocusKeyframe key;
    key.endTime = EditTime(1);
    key.rect = {0.1, 0.1, 0.2, 0.2};
    instruction.focusKeyframes = {key, key};
    for (std::size_t i = 0; i < 16; ++i) instruction.focusKeyframes[1].id.bytes[i] = static_cast<std::uint8_t>(i + 1);
    StageGeometry stage;
    stage.videoRect = stage.frameRect = {0, 0, 1000, 500};
    const auto ovals = focusOvalsAt(instruction, stage, EditTime(0.5));
    ASSERT_EQ(ovals.size(), 2U);
    EXPECT_EQ(ovals[0].seed, 0x9e3779b97f4a7c15);
    EXPECT_EQ(ovals[1].seed, 0x0102030405060708);
    EXPECT_EQ(ovals[0].lineWidth, 4);
}

} // namespace
} // namespace morvelin
