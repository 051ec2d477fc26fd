// The built-in backgrounds: their names, their colours, and that no gradient shows bands.

#include <set>

#include <gtest/gtest.h>

#include "CompositorScenes.h"
#include "render/BackgroundArt.h"
#include "render/BackgroundPresets.h"
#include "render/StageImage.h"

namespace morvelin {
namespace {

using namespace test;

constexpr PixelSize kOutput{640, 360};

TEST(BackgroundPresets, AreAllThereAndFallBack) {
    std::set<std::string_view> ids;
    int brands = 0;
    for (const auto& preset : BackgroundPresets::gradients()) {
        ids.insert(preset.id);
        brands += preset.rendering == BackgroundPresets::Rendering::Brand ? 1 : 0;
        EXPECT_FALSE(preset.name.empty()) << preset.id;
        for (std::size_t i = 0; i < preset.hexColors.size(); ++i)
            EXPECT_EQ(preset.hexColors[i].size(), 6U) << preset.id;
    }
    EXPECT_EQ(ids.size(), 28U);
    EXPECT_EQ(brands, 12);
    for (const char* id : {"palette-verdant", "macos-15", "mesh-terra", "crimson-navy"})
        EXPECT_EQ(BackgroundPresets::gradient(id).id, id);
    EXPECT_EQ(BackgroundPresets::gradient("palette-atlantis").id, "palette-dune");
    EXPECT_EQ(BackgroundPresets::wallpaper("sunset").hexColors[1], "F59E0B");
    EXPECT_EQ(BackgroundPresets::wallpaper("wallpaper-milkyway").id, "default");
}

TEST(BackgroundArt, EveryGradientStaysNearItsOwnColours) {
    for (const auto& preset : BackgroundPresets::gradients()) {
        const BackgroundArt art(gradientBackground(std::string(preset.id)), kOutput);
        for (double v = 0; v <= 1; v += 0.05) {
            for (double u = 0; u <= 1; u += 0.05) {
                const Oklab color = oklabFromRgb(art.colorAt(u, v));
                double nearest = 9;
                for (std::size_t i = 0; i + 1 < preset.hexColors.size(); ++i) {
                    // Along the straight lines between neighbours of the palette.
                    for (double share = 0; share <= 1; share += 0.05) {
                        const Oklab wanted = mixed(oklabFromRgb(rgbFromHex(preset.hexColors[i])),
                                                   oklabFromRgb(rgbFromHex(preset.hexColors[i + 1])), share);
                        nearest = std::min(nearest, std::hypot(color.lightness - wanted.lightness, color.a - wanted.a,
                                                               color.b - wanted.b));
                    }
                }
                ASSERT_LT(nearest, 0.08) << preset.id << " at " << u << ' ' << v;
            }
        }
    }
}

TEST(BackgroundArt, MeshesHaveTheirFigures) {
    const BackgroundArt nebula(gradientBackground("mesh-nebula"), {1000, 500});
    ASSERT_EQ(nebula.shapes().size(), 3U);
    EXPECT_NEAR(nebula.shapes()[0].centerX, 780, 1e-9);
    EXPECT_NEAR(nebula.shapes()[0].centerY, 90, 1e-9);
    EXPECT_NEAR(nebula.shapes()[1].halfWidth, 210, 1e-9);
    const BackgroundArt glacier(gradientBackground("mesh-glacier"), {1000, 500});
    ASSERT_EQ(glacier.shapes().size(), 2U);
    EXPECT_NEAR(glacier.shapes()[0].cornerRadius, 0.14 * 110, 1e-9);
    EXPECT_EQ(glacier.shapes()[0].angle, -0.22);
    const BackgroundArt terra(gradientBackground("mesh-terra"), {1000, 500});
    EXPECT_EQ(terra.shapes()[0].coverage(220, 140), 1);
    EXPECT_EQ(terra.shapes()[0].coverage(220 + 80, 140 + 80), 0) << "the corner of the box around a diamond";
}

Rgb meanOf(const StageImage& stage) {
    double y = 0, cb = 0, cr = 0;
    const DeepPlane& luma = stage.plane(0, StageShadow::None);
    for (int row = 0; row < luma.height(); ++row)
        for (int x = 0; x < luma.width(); ++x) {
            y += luma.row(row)[x];
            cb += stage.plane(1, StageShadow::None).row(row)[x];
            cr += stage.plane(2, StageShadow::None).row(row)[x];
        }
    const double count = 128.0 * luma.width() * luma.height();
    return {y / count, cb / count, cr / count};
}

TEST(BackgroundArt, EachKindOfBackgroundIsPainted) {
    auto instruction = plainInstruction({0, 0}, {64, 36});
    EXPECT_NEAR(meanOf(StageImage(*instruction, Subsampling::None)).red, 16, 0.01) << "none is black";

    Background background;
    background.type = BackgroundType::SolidColor;
    background.solidColor = {1, 1, 1, 0.5};
    instruction->background = background;
    EXPECT_NEAR(meanOf(StageImage(*instruction, Subsampling::None)).red, 16 + 219 * 0.5, 0.6) << "light over black";

    for (const BackgroundType type : {BackgroundType::Wallpaper, BackgroundType::Image}) {
        background.type = type;
        instruction->background = background;
        const Rgb mean = meanOf(StageImage(*instruction, Subsampling::None));
        EXPECT_GT(mean.green, 140) << "the fallback's blues";
    }
}

TEST(BackgroundArt, GradientsHaveNoBands) {
    // Of 16 × 16 pixels the mean may not stand still where the gradient goes on.
    auto instruction = plainInstruction({0, 0}, {3840, 2160});
    instruction->background = gradientBackground("midnight");
    const StageImage stage(*instruction, Subsampling::Quarter);
    const DeepPlane& luma = stage.plane(0, StageShadow::None);
    int still = 0;
    double before = 0;
    for (int block = 0; block + 1 < 2160 / 64; ++block) {
        double mean = 0;
        for (int y = block * 64; y < block * 64 + 64; ++y)
            for (int x = 0; x < 64; ++x) mean += luma.row(y)[x] / 128.0 / 4096;
        if (block > 0 && std::abs(mean - before) < 0.02) ++still;
        before = mean;
    }
    EXPECT_LT(still, 3);
}

} // namespace
} // namespace morvelin
