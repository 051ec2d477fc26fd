#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tracks.h"
#include "timeline/PositionKeys.h"

namespace morvelin {
namespace {

using test::positionKey;
using test::zoomKey;
using testing::ElementsAre;

std::vector<double> times(const std::vector<PositionKeyframe>& keys) {
    std::vector<double> out;
    for (const PositionKeyframe& key : keys) out.push_back(key.time.value);
    return out;
}

TEST(RefitPositionKeys, FramesEachTargetForTheZoomItServes) {
    const std::vector<ZoomKeyframe> zooms{zoomKey(0, 0, 1), zoomKey(10, 1, 2), zoomKey(14, 1, 1), zoomKey(30, 1, 4)};
    struct Case {
        const char* what;
        double time;
        std::optional<UUID> owner;
        double centerX; ///< of a target at the right edge
    };
    const std::vector<Case> cases{{"never zoomed in: the middle", 1, {}, 0.5},
                                  {"its own ramp's zoom, though the window has none", 3, zooms[3].id, 0.875},
                                  {"a zoom-out owns nothing: the window decides", 5, zooms[2].id, 0.75},
                                  {"the greatest zoom until the next key", 12, {}, 0.75},
                                  {"an unknown owner", 20, UUID{{7}}, 0.5},
                                  {"5 s after the last key", 25.5, {}, 1 - 0.5 / 2.5}};
    std::vector<PositionKeyframe> keys;
    for (const Case& c : cases) {
        keys.push_back(positionKey(c.time, 1, 0.5));
        keys.back().zoomKeyframeID = c.owner;
    }
    const std::vector<PositionKeyframe> sorted = keys;
    std::ranges::reverse(keys);
    keys = refitPositionKeys(std::move(keys), zooms, 0);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        EXPECT_NEAR(keys[i].centerX, cases[i].centerX, 1e-9) << cases[i].what;
        keys[i].centerX = sorted[i].centerX;
        EXPECT_EQ(keys[i], sorted[i]) << "all else is kept";
    }
}

class EphemeralPositionKeys : public testing::Test {
protected:
    [[nodiscard]] std::vector<PositionKeyframe> pins(std::optional<Seconds> duration = 12_s) {
        return ephemeralPositionKeys(stored, zooms, 0, duration, ids);
    }

    std::vector<PositionKeyframe> stored{positionKey(0, 0.5, 0.5)};
    std::vector<ZoomKeyframe> zooms{zoomKey(8, 1, 1), zoomKey(0, 0, 1), zoomKey(4, 1, 2)};
    SeededIdSource ids{1};
};

TEST_F(EphemeralPositionKeys, PinTheFirstRampsStartAndBothEndsOfEachPlateau) {
    EXPECT_THAT(times(pins()), ElementsAre(4, 5, 8, 9, 12));
    EXPECT_THAT(times(pins(std::nullopt)), ElementsAre(4, 5, 8, 9));
    EXPECT_TRUE(std::ranges::all_of(pins(), [](const auto& key) { return key.isEphemeral && !key.zoomKeyframeID; }));
    zooms.push_back(zoomKey(6, 1, 2));
    EXPECT_THAT(times(pins()), ElementsAre(4, 5, 8, 9, 12)) << "a key that changes nothing is no ramp";
    zooms.clear();
    EXPECT_TRUE(pins().empty());
}

TEST_F(EphemeralPositionKeys, LeaveARampToTheStoredKeyThatGovernsIt) {
    struct Case {
        double storedAt;
        std::vector<double> pinned;
    };
    for (const Case& c : {Case{6, {4, 9, 12}},     // on the plateau
                          {8, {4, 9, 12}},         // at its very end
                          {4.4, {4, 9, 12}},       // past a third of the ramp
                          {4.3, {4, 5, 8, 9, 12}}, // before that
                          {2, {5, 8, 9, 12}},      // before the ramp: no seed
                          {11, {4, 5, 8}}}) {      // after the zoom-out
        stored = {positionKey(0, 0.5, 0.5), positionKey(c.storedAt, 0.9, 0.5)};
        EXPECT_EQ(times(pins()), c.pinned) << c.storedAt;
        stored.back().isEphemeral = true;
        EXPECT_EQ(pins().size(), 5U) << "a derived key governs nothing";
    }
}

TEST_F(EphemeralPositionKeys, AimWhereTheStoredTrackDoes) {
    stored = {positionKey(0, 0.3, 0.5), positionKey(0, 0.2, 0.5), positionKey(2, 0.9, 0.5)};
    const auto keys = pins();
    ASSERT_THAT(times(keys), ElementsAre(5, 8, 9, 12));
    EXPECT_EQ(keys[0].targetX, 0.9);
    EXPECT_EQ(keys[0].centerX, 0.75);
    EXPECT_EQ(keys[2].centerX, 0.5) << "zoomed out";

    stored.pop_back();
    EXPECT_EQ(pins().front().time, EditTime(4_s));
    EXPECT_EQ(pins().front().targetX, 0.3) << "of stored keys at one time the first";
}

} // namespace
} // namespace morvelin
