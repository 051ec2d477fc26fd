#include "render/WallpaperPainting.h"

#include <algorithm>
#include <vector>

#include "core/base/Parallel.h"

namespace morvelin {

namespace {

using wallpapers::Light;

/// A row's chroma at each pixel.
struct ChromaRow {
    std::vector<float> cb;
    std::vector<float> cr;
};

std::int16_t deepSampleOf(float level) { return static_cast<std::int16_t>(level * kDeepOne + 0.5F); }

/// Paints a row; its luma is done, its chroma still that of each pixel.
ChromaRow paintRow(const wallpapers::Wallpaper& wallpaper, int row, DeepPlane& luma) {
    const auto width = static_cast<std::size_t>(luma.width());
    std::vector<Light> lights(width);
    wallpaper.paintRow(row, lights);
    ChromaRow chroma{std::vector<float>(width), std::vector<float>(width)};
    std::int16_t* samples = luma.row(row);
    for (std::size_t x = 0; x < width; ++x) {
        const float red = wallpapers::coded(lights[x].red);
        const float green = wallpapers::coded(lights[x].green);
        const float blue = wallpapers::coded(lights[x].blue);
        const float brightness = 0.2126F * red + 0.7152F * green + 0.0722F * blue;
        samples[x] = deepSampleOf(16 + 219 * brightness);
        chroma.cb[x] = 128 + 224 / 1.8556F * (blue - brightness);
        chroma.cr[x] = 128 + 224 / 1.5748F * (red - brightness);
    }
    return chroma;
}

/// A chroma sample stands for the pixel it lies on in two rows, and for half of that pixel's neighbours.
void joinChroma(const std::vector<float>& upper, const std::vector<float>& lower, DeepPlane& plane, int row) {
    const int last = static_cast<int>(upper.size()) - 1;
    const auto both = [&](int x) {
        const auto i = static_cast<std::size_t>(std::clamp(x, 0, last));
        return upper[i] + lower[i];
    };
    std::int16_t* samples = plane.row(row);
    for (int x = 0; x < plane.width(); ++x)
        samples[x] = deepSampleOf((both(2 * x - 1) + 2 * both(2 * x) + both(2 * x + 1)) / 8);
}

void copyChroma(const std::vector<float>& chroma, DeepPlane& plane, int row) {
    std::ranges::transform(chroma, plane.row(row), deepSampleOf);
}

} // namespace

void paintWallpaper(const wallpapers::Wallpaper& wallpaper, Subsampling subsampling, DeepPlanes& planes) {
    const auto chromaRows = static_cast<std::size_t>(planes[1].height());
    inParallel(chromaRows, [&](std::size_t index) {
        const int row = static_cast<int>(index);
        if (subsampling == Subsampling::None) {
            const ChromaRow chroma = paintRow(wallpaper, row, planes[0]);
            copyChroma(chroma.cb, planes[1], row);
            copyChroma(chroma.cr, planes[2], row);
        } else {
            const ChromaRow upper = paintRow(wallpaper, 2 * row, planes[0]);
            const ChromaRow lower = paintRow(wallpaper, 2 * row + 1, planes[0]);
            joinChroma(upper.cb, lower.cb, planes[1], row);
            joinChroma(upper.cr, lower.cr, planes[2], row);
        }
    });
}

} // namespace morvelin
