// Pictures of each layer, as they were judged to be good: what a change of the art or of the drawing shows first. A small
// difference of libraries and processors is allowed for.
//
// MORVELIN_REMAKE_GOLDEN=1 writes them anew; look at them before you commit.

#include <cmath>
#include <cstdlib>

#include <gtest/gtest.h>

#include "CompositorScenes.h"
#include "core/base/Files.h"
#include "media/ColorConversion.h"
#include "media/PNG.h"
#include "render/Compositor.h"
#include "render/CursorArtwork.h"

namespace morvelin {
namespace {

using namespace test;
namespace fs = std::filesystem;

constexpr PixelSize kOutput{240, 136};
/// Of 255, over all channels.
constexpr double kMeanDifference = 0.5;
constexpr double kWorstShare = 0.002; ///< of samples further apart than `kFarApart`
constexpr int kFarApart = 12;

struct Golden {
    const char* name;
    void (*dress)(CompositionInstruction& instruction);
};

void setBackground(CompositionInstruction& instruction, BackgroundType type, const char* name) {
    Background background = gradientBackground(name);
    background.type = type;
    background.wallpaperName = name;
    instruction.background = background;
}

void setPointer(CompositionInstruction& instruction, CursorStyle style) {
    CursorEvent event;
    event.x = event.y = 0.5;
    CursorShapeTrack track;
    track.captureWidth = 120;
    track.captureHeight = 68;
    track.shapes = {{0, CursorShapeTrack::Kind::Arrow, 20, 24, 2, 1}};
    track.changes = {{SourceTime(0), 0}};
    const auto image = std::make_shared<const Image>(CursorArtwork::of(style)->image());
    instruction.cursorScene = std::make_shared<const CursorScene>(
        CursorScene::make(std::vector{event},
                          std::make_shared<const CursorShapeLibrary>(
                              std::move(track), std::map<std::int64_t, std::shared_ptr<const Image>>{{0, image}}),
                          {.style = style}));
}

constexpr Golden kGoldens[] = {
    {"silk", [](auto& i) { setBackground(i, BackgroundType::Gradient, "palette-lagoon"); }},
    {"mesh", [](auto& i) { setBackground(i, BackgroundType::Gradient, "mesh-nebula"); }},
    {"glow", [](auto& i) { setBackground(i, BackgroundType::Gradient, "navy-ember"); }},
    {"wallpaper", [](auto& i) { setBackground(i, BackgroundType::Wallpaper, "wallpaper-dune-light"); }},
    {"shadow-and-corners", [](auto& i) { i.shadowIntensity = 1; }},
    {"zoom", [](auto& i) { i.denseFrames = view(2.2, 0.3, 0.4); }},
    {"masks",
     [](auto& i) {
         i.maskKeyframes = {mask({0.2, 0.2, 0.4, 0.5}, 6)};
     }},
    {"rings",
     [](auto& i) {
         i.clickPings = {{EditTime(0.8), 0.4, 0.5, MouseButton::Left, 2}};
     }},
    {"pointer-ink", [](auto& i) { setPointer(i, CursorStyle::Ink); }},
    {"pointer-frosted", [](auto& i) { setPointer(i, CursorStyle::FrostedAmber); }},
    {"oval",
     [](auto& i) {
         i.focusKeyframes = {focus({0.2, 0.2, 0.5, 0.5}, 3)};
     }},
    {"hand-pointer", [](auto& i) { i.tapTapKeyframes = {tapTap(0.4, 0.3, 0.6)}; }},
    {"hand-glove",
     [](auto& i) {
         i.tapTapKeyframes = {tapTap(0.4, 0.3, 0.6)};
         i.tapTapStyle = TapTapStyle::Glove;
     }},
    {"bubble",
     [](auto& i) {
         i.cameraSettings = CameraSettings{{0.6, 0.4, 0.35, 0.5}, 0.5, true, {}};
     }},
};

Image composed(const Golden& golden) {
    auto instruction = plainInstruction({320, 180}, kOutput);
    instruction->background = gradientBackground("palette-dune");
    instruction->padding = 0.08;
    instruction->cornerRadius = 0.04;
    golden.dress(*instruction);
    const ShownFrames frames{movieFrame(desktopPicture({320, 180}, 7), 1), movieFrame(desktopPicture({96, 72}, 9), 1)};
    Compositor compositor(instruction, Subsampling::None);
    return imageOf(compositor.compose(framePlan(*instruction, EditTime(1), frames.numbers()), frames).picture);
}

void expectAlike(const Image& image, const Image& golden, const char* name) {
    ASSERT_EQ(image.size, golden.size) << name;
    double sum = 0;
    int far = 0;
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        const int apart = std::abs(image.pixels[i] - golden.pixels[i]);
        sum += apart;
        far += apart > kFarApart ? 1 : 0;
    }
    const auto count = static_cast<double>(image.pixels.size());
    EXPECT_LT(sum / count, kMeanDifference) << name;
    EXPECT_LT(far / count, kWorstShare) << name;
}

TEST(Golden, EveryLayerLooksAsItDid) {
    const fs::path folder = fs::path(MORVELIN_SOURCE_DIR) / "tests" / "render" / "golden";
    for (const Golden& golden : kGoldens) {
        const Image image = composed(golden);
        const fs::path file = folder / (std::string(golden.name) + ".png");
        if (std::getenv("MORVELIN_REMAKE_GOLDEN") != nullptr) {
            const auto png = encodePNG(image);
            ASSERT_TRUE(png);
            fs::create_directories(folder);
            ASSERT_TRUE(writeFileAtomically(file, std::string(png->begin(), png->end())));
        }
        const auto bytes = readFile(file);
        ASSERT_TRUE(bytes) << file;
        const auto kept = decodePNG(std::span(reinterpret_cast<const std::uint8_t*>(bytes->data()), bytes->size()));
        ASSERT_TRUE(kept) << file;
        expectAlike(image, *kept, golden.name);
    }
}

} // namespace
} // namespace morvelin
