#include "render/CursorScene.h"

#include <gtest/gtest.h>

namespace morvelin {
namespace {

std::shared_ptr<const Image> imageOf(int width, int height) {
    return std::make_shared<const Image>(Image{{width, height}, std::vector<std::uint8_t>(4U * width * height, 255)});
}

/// An arrow until 2 s, then nothing known, from 3 s a text beam, from 4 s a shape whose image is lost.
std::shared_ptr<const CursorShapeLibrary> library() {
    CursorShapeTrack track;
    track.captureWidth = 960;
    track.captureHeight = 540;
    using Kind = CursorShapeTrack::Kind;
    track.shapes = {{0, Kind::Arrow, 24, 32, 6, 8}, {1, Kind::Other, 10, 20, 5, 10}, {2, Kind::Other, 10, 10, 0, 0}};
    track.changes = {{SourceTime(0), 0}, {SourceTime(2), {}}, {SourceTime(3), 1}, {SourceTime(4), 2}};
    return std::make_shared<const CursorShapeLibrary>(
        track, std::map<std::int64_t, std::shared_ptr<const Image>>{{0, imageOf(48, 64)}, {1, imageOf(10, 20)}});
}

const std::vector<CursorEvent> kEvents{{SourceTime(0), 0.25, 0.5, CursorEventType::Move, {}, {}},
                                       {SourceTime(5), 0.75, 0.5, CursorEventType::Move, {}, {}}};

std::optional<CursorSprite> spriteAt(double t, const CursorSettings& settings) {
    static const auto shapes = library();
    return CursorScene::make(kEvents, shapes, settings).sprite(SourceTime(t));
}

TEST(CursorScene, AShapeIsDrawnAtItsPointSizeTimesTheSetting) {
    struct Case {
        double setting, scale;
    };
    for (const Case& c : {Case{1.5, 1.5}, {0.1, 0.5}, {9, 3}}) {
        const auto arrow = spriteAt(1, {true, CursorStyle::System, c.setting, 0});
        ASSERT_TRUE(arrow);
        EXPECT_NEAR(arrow->width, 24 * c.scale / 960, 1e-12);
        EXPECT_NEAR(arrow->height, 32 * c.scale / 540, 1e-12);
        EXPECT_EQ(arrow->hotSpot, (NormalizedPoint{0.25, 0.25}));
        EXPECT_NEAR(arrow->position.x, 0.35, 1e-12);
        EXPECT_EQ(arrow->image->size, (PixelSize{48, 64})) << "all the pixels there are";
    }
}

TEST(CursorScene, ShowsTheShapeOfTheMoment) {
    const CursorSettings settings;
    EXPECT_EQ(spriteAt(1.99, settings)->image->size.width, 48);
    EXPECT_FALSE(spriteAt(2, settings)) << "no known shape";
    EXPECT_EQ(spriteAt(3, settings)->image->size.width, 10);
    EXPECT_FALSE(spriteAt(4, settings)) << "the image is lost";
    EXPECT_FALSE(spriteAt(-1, settings)) << "before the first change";
    EXPECT_FALSE(spriteAt(1, {false, CursorStyle::System, 1.5, 0}));
}

TEST(CursorScene, AStyleReplacesTheArrowAlone) {
    const CursorSettings amber{true, CursorStyle::Amber, 1.5, 0};
    const auto artwork = CursorArtwork::of(CursorStyle::Amber);
    const auto shapes = library();
    const CursorScene scene = CursorScene::make(kEvents, shapes, amber);
    const auto arrow = scene.sprite(SourceTime(1));
    ASSERT_TRUE(arrow);
    EXPECT_EQ(*arrow->image, artwork->image());
    EXPECT_EQ(arrow->hotSpot, artwork->hotSpot);
    EXPECT_NEAR(arrow->height, 36.0 / 540, 1e-12);
    EXPECT_NEAR(arrow->width * 960 / (arrow->height * 540),
                static_cast<double>(arrow->image->size.width) / arrow->image->size.height, 1e-9);
    EXPECT_EQ(scene.sprite(SourceTime(1))->image, arrow->image) << "drawn once";

    const CursorScene recorded = CursorScene::make(kEvents, shapes, {true, CursorStyle::System, 1.5, 0});
    EXPECT_EQ(scene.sprite(SourceTime(3)), recorded.sprite(SourceTime(3))) << "a text cursor stays";
    EXPECT_FALSE(scene.sprite(SourceTime(2))) << "no known shape";
    const CursorScene lost(shapes, CursorPath::make(kEvents, 0, {960, 540}), amber, nullptr);
    EXPECT_EQ(lost.sprite(SourceTime(1)), recorded.sprite(SourceTime(1))) << "no artwork";
}

} // namespace
} // namespace morvelin
