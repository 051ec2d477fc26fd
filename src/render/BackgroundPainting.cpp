#include "render/BackgroundPainting.h"

#include "render/BackgroundPicture.h"
#include "render/BlueNoise.h"
#include "render/GradientPainting.h"
#include "render/WallpaperPainting.h"

namespace morvelin {

namespace {

/// The grain is a tile of greys laid over the background at this opacity, of 32768: a level and a bit of rustle.
constexpr int kGrainAlpha = 590;

void layGrain(DeepPlanes& planes) {
    constexpr int kLastRank = BlueNoise::kSide * BlueNoise::kSide - 1;
    for (std::size_t p = 0; p < 3; ++p) {
        for (int y = 0; y < planes[p].height(); ++y) {
            std::array<int, BlueNoise::kSide> greys{};
            for (int x = 0; x < BlueNoise::kSide; ++x)
                greys[static_cast<std::size_t>(x)] =
                    p == 0 ? kDeepBlack[0] + 219 * kDeepOne * BlueNoise::tile().rank(x, y) / kLastRank : kDeepBlack[p];
            std::int16_t* row = planes[p].row(y);
            for (int x = 0; x < planes[p].width(); ++x)
                row[x] = laidOver(row[x], greys[static_cast<std::size_t>(x % BlueNoise::kSide)], kGrainAlpha);
        }
    }
}

bool hasType(const CompositionInstruction& instruction, BackgroundType type) {
    return instruction.background && instruction.background->type == type;
}

} // namespace

void paintBackground(const CompositionInstruction& instruction, Subsampling subsampling, DeepPlanes& planes) {
    const BackgroundArt art(instruction.background, instruction.outputSize);
    const auto wallpaper = hasType(instruction, BackgroundType::Wallpaper)
                               ? wallpapers::makeWallpaper(instruction.background->wallpaperName,
                                                           instruction.outputSize)
                               : nullptr;
    const bool hasImage = hasType(instruction, BackgroundType::Image) && instruction.backgroundImage;
    if (art.isUniform())
        paintUniformly(art, planes);
    else if (wallpaper)
        paintWallpaper(*wallpaper, subsampling, planes);
    else if (hasImage)
        paintImage(*instruction.backgroundImage, subsampling, planes);
    else
        paintGradient(art, instruction.outputSize, subsampling, planes);
    if (art.hasGrain()) layGrain(planes);
}

} // namespace morvelin
