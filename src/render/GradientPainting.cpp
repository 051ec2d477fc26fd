#include "render/GradientPainting.h"

#include <algorithm>
#include <cmath>

namespace morvelin {

namespace {

/// Smooth colours are worked out at so many places along the longer side.
constexpr double kColorNodes = 160;
constexpr int kMargin = 2;

/// Colours at the nodes of a coarse grid; node `kMargin` lies at the output's corner.
DeepPlanes colorNodes(const BackgroundArt& art, PixelSize size, double spacing) {
    const int width = static_cast<int>(std::ceil(size.width / spacing)) + 2 * kMargin + 1;
    const int height = static_cast<int>(std::ceil(size.height / spacing)) + 2 * kMargin + 1;
    DeepPlanes nodes{DeepPlane(width, height), DeepPlane(width, height), DeepPlane(width, height)};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto levels = levelsOf(
                art.colorAt((x - kMargin) * spacing / size.width, (y - kMargin) * spacing / size.height));
            for (std::size_t p = 0; p < 3; ++p) nodes[p].row(y)[x] = deepSample(levels[p]);
        }
    }
    return nodes;
}

void paintColors(const BackgroundArt& art, PixelSize size, Subsampling subsampling, DeepPlanes& planes) {
    const double spacing = std::max(1.0, std::max(size.width, size.height) / kColorNodes);
    const DeepPlanes nodes = colorNodes(art, size, spacing);
    const PhaseTable phases = catmullRomPhases();
    for (int p = 0; p < 3; ++p) {
        DeepPlane& plane = planes[static_cast<std::size_t>(p)];
        const DeepPlane& small = nodes[static_cast<std::size_t>(p)];
        const PlaneGrid grid = planeGrid(p, subsampling);
        const auto mapping = [&](const SampleGrid& samples) {
            return AxisMapping{samples.origin / spacing + kMargin, samples.step / spacing};
        };
        const PlaneTaps taps{
            rowTaps(axisTaps(phases, mapping(grid.x), 0, plane.width(), small.width()), SampleWidth::Deep),
            axisTaps(phases, mapping(grid.y), 0, plane.height(), small.height())};
        scaleDeepPlane(small, taps, plane,
                       [&](int y, const std::int16_t* row) { std::copy_n(row, plane.width(), plane.row(y)); });
    }
}

/// What a figure lays over a sample: its colour at each plane's levels, times its opacity.
struct SampleVeil {
    std::array<double, 3> levels{};
    double alpha = 0;

    void add(const ArtShape& shape, double x, double y, double weight) {
        const double covered = weight * shape.coverage(x, y);
        if (covered == 0) return;
        const ArtShape::Veil veil = shape.veilAt(x, y);
        const auto color = levelsOf(veil.color);
        for (std::size_t p = 0; p < 3; ++p) levels[p] += covered * veil.alpha * color[p];
        alpha += covered * veil.alpha;
    }
};

/// Over the pixel of a sample, or over the pixels around a chroma sample.
SampleVeil veilOver(const ArtShape& shape, const PlaneGrid& grid, int x, int y) {
    SampleVeil veil;
    if (grid.divisor == 1) {
        veil.add(shape, x + 0.5, y + 0.5, 1);
        return veil;
    }
    for (int row = 0; row < 2; ++row)
        for (int column = -1; column <= 1; ++column)
            veil.add(shape, 2 * x + column + 0.5, 2 * y + row + 0.5, column == 0 ? 0.25 : 0.125);
    return veil;
}

void layOver(const SampleVeil& veil, std::size_t plane, std::int16_t& sample) {
    sample = static_cast<std::int16_t>(std::lround(sample * (1 - veil.alpha) + veil.levels[plane] * kDeepOne));
}

void paintShape(const ArtShape& shape, Subsampling subsampling, DeepPlanes& planes) {
    const PixelBox shown = shape.bounds().intersected({0, 0, planes[0].width(), planes[0].height()});
    const PixelBox luma = planeBox(shown, planeGrid(0, subsampling));
    for (int y = luma.y; y < luma.bottom(); ++y)
        for (int x = luma.x; x < luma.right(); ++x)
            layOver(veilOver(shape, planeGrid(0, subsampling), x, y), 0, planes[0].row(y)[x]);

    const PlaneGrid grid = planeGrid(1, subsampling);
    const PixelBox chroma = planeBox(shown, grid);
    for (int y = chroma.y; y < chroma.bottom(); ++y) {
        for (int x = chroma.x; x < chroma.right(); ++x) {
            const SampleVeil veil = veilOver(shape, grid, x, y);
            for (std::size_t p = 1; p < 3; ++p) layOver(veil, p, planes[p].row(y)[x]);
        }
    }
}

} // namespace

void paintUniformly(const BackgroundArt& art, DeepPlanes& planes) {
    const auto levels = levelsOf(art.colorAt(0.5, 0.5));
    for (std::size_t p = 0; p < 3; ++p) {
        // A whole level, so that an even colour stays even.
        const std::int16_t sample = deepSample(std::round(levels[p]));
        for (int y = 0; y < planes[p].height(); ++y) std::fill_n(planes[p].row(y), planes[p].width(), sample);
    }
}

void paintGradient(const BackgroundArt& art, PixelSize size, Subsampling subsampling, DeepPlanes& planes) {
    paintColors(art, size, subsampling, planes);
    for (const ArtShape& shape : art.shapes()) paintShape(shape, subsampling, planes);
}

} // namespace morvelin
