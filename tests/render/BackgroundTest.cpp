// The built-in backgrounds: their names, their colours, and that no gradient shows bands.

#include <set>

#include <gtest/gtest.h>

#include "CompositorScenes.h"
#include "base/TemporaryFolder.h"
#include "core/base/Files.h"
#include "core/base/PercentEncoding.h"
#include "core/base/Text.h"
#include "media/PNG.h"
#include "render/BackgroundArt.h"
#include "render/BackgroundPicture.h"
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

TEST(BackgroundPresets, EveryNameChoosesABackgroundOfItsOwn) {
    std::set<std::string> seen;
    for (const std::string& name : BackgroundPresets::names())
        EXPECT_TRUE(seen.insert(caseFolded(name)).second) << name << " is the name of two";
    for (const auto& solid : BackgroundPresets::solids())
        EXPECT_EQ(BackgroundPresets::named(solid.name, {})->type, BackgroundType::SolidColor) << solid.name;
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

    background.imageURL = "file:///nowhere/gone.png";
    background.wallpaperName = "wallpaper-atlantis";
    for (const BackgroundType type : {BackgroundType::Wallpaper, BackgroundType::Image}) {
        background.type = type;
        instruction->background = background;
        const Rgb mean = meanOf(StageImage(*instruction, Subsampling::None));
        EXPECT_GT(mean.green, 140) << "the blues in place of what can't be had";
    }
    background.wallpaperName = "wallpaper-ember-night";
    background.type = BackgroundType::Wallpaper;
    instruction->background = background;
    EXPECT_LT(meanOf(StageImage(*instruction, Subsampling::None)).green, 128) << "no blue in a fire";
}

TEST(BackgroundArt, AProjectsOwnImageIsLoadedWhereThereIsOne) {
    const TemporaryFolder folder;
    const auto png = encodePNG({{40, 30}, std::vector<std::uint8_t>(4 * 40 * 30, 255)});
    ASSERT_TRUE(png);
    const std::string bytes(png->begin(), png->end());
    ASSERT_TRUE(writeFileAtomically(folder.path() / "my picture.png", bytes));
    ASSERT_TRUE(writeFileAtomically(folder.path() / "broken.png", bytes.substr(0, bytes.size() / 2)));
    Background background;
    background.type = BackgroundType::Image;
    const auto loaded = [&](const char* name) {
        background.imageURL = fileURL(folder.path() / name);
        return loadBackgroundImage(background, folder.path(), {16, 9});
    };
    ASSERT_NE(loaded("my picture.png"), nullptr);
    EXPECT_EQ(loaded("my picture.png")->size, (PixelSize{16, 12}));
    EXPECT_EQ(loaded("broken.png"), nullptr);
    EXPECT_EQ(loaded("gone.png"), nullptr);
    background.imageURL.reset();
    EXPECT_EQ(loadBackgroundImage(background, folder.path(), {16, 9}), nullptr);
}

/// Rows of pixels in the given greys, each grey `columns` wide.
Image stripes(std::initializer_list<int> greys, int columns, int height) {
    Image image{{static_cast<int>(greys.size()) * columns, height}, {}};
    for (int y = 0; y < height; ++y)
        for (const int grey : greys)
            for (int x = 0; x < columns; ++x)
                for (const int part : {grey, grey, grey, 255}) image.pixels.push_back(static_cast<std::uint8_t>(part));
    return image;
}

TEST(BackgroundArt, AnImageCoversTheOutputFromItsMiddle) {
    struct Case {
        const char* what;
        Image image;
        std::array<double, 3> greys; ///< at the left, in the middle and at the right
    };
    const auto level = [](double grey) { return 16 + 219 * grey / 255; };
    auto instruction = plainInstruction({0, 0}, {64, 64});
    instruction->background = Background();
    instruction->background->type = BackgroundType::Image;
    for (const Case& c : {Case{"wider", stripes({0, 90, 160, 250}, 64, 128), {90, 125, 160}},
                          {"higher", stripes({40, 200}, 16, 90), {40, 120, 200}},
                          {"as large", stripes({40, 200}, 32, 64), {40, 120, 200}},
                          {"one pixel", stripes({77}, 1, 1), {77, 77, 77}}}) {
        instruction->backgroundImage = std::make_shared<const Image>(c.image);
        for (const Subsampling subsampling : {Subsampling::None, Subsampling::Quarter}) {
            const StageImage stage(*instruction, subsampling);
            const auto at = [&](int x, int plane = 0) {
                return stage.plane(plane, StageShadow::None)
                           .row(stage.plane(plane, StageShadow::None).height() / 2)[x] /
                       static_cast<double>(kDeepOne);
            };
            EXPECT_NEAR(at(2), level(c.greys[0]), 0.5) << c.what;
            EXPECT_NEAR((at(31) + at(32)) / 2, level(c.greys[1]), 0.5) << c.what;
            EXPECT_NEAR(at(61), level(c.greys[2]), 0.5) << c.what;
            EXPECT_NEAR(at(5, 1), 128, 0.05) << c.what;
        }
    }
    // A picture of the output's own size stays pixel for pixel.
    instruction->backgroundImage = std::make_shared<const Image>(
        stripes({0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255,
                 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255,
                 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0, 255},
                1, 64));
    const StageImage sharp(*instruction, Subsampling::None);
    for (int x = 0; x < 64; ++x)
        ASSERT_EQ(sharp.plane(0, StageShadow::None).row(20)[x], kDeepOne * (x % 2 == 0 ? 16 : 235)) << x;
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
