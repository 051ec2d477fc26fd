#include "render/StageImage.h"

#include <algorithm>
#include <cmath>

#include "render/BackgroundArt.h"
#include "render/BlueNoise.h"
#include "render/StageGeometry.h"
#include "render/StageShadow.h"

namespace morvelin {

namespace {

constexpr int kDeepOne = 1 << kDeepBits;
/// Black in deep samples, for each plane.
constexpr std::array<int, 3> kBlack = {16 * kDeepOne, 128 * kDeepOne, 128 * kDeepOne};
/// The grain is a tile of greys laid over the background at this opacity, of 32768: a level and a bit of rustle.
constexpr int kGrainAlpha = 590;
/// Smooth colours are worked out at so many places along the longer side.
constexpr double kColorNodes = 160;
constexpr int kMargin = 2;

using Planes = std::array<DeepPlane, 3>;

std::int16_t deep(double level) {
    return static_cast<std::int16_t>(std::lround(std::clamp(level, 0.0, 255.0) * kDeepOne));
}

std::array<double, 3> levels(const Ycc& color) { return {color.y, color.cb, color.cr}; }

Planes emptyPlanes(PixelSize size, Subsampling subsampling) {
    Planes planes;
    for (int p = 0; p < 3; ++p) {
        const PixelBox box = planeBox({0, 0, size.width, size.height}, planeGrid(p, subsampling));
        planes[static_cast<std::size_t>(p)] = DeepPlane(box.width, box.height);
    }
    return planes;
}

/// Magnifies a small plane of smooth samples; calls `use(y, row)` for each row.
template <class Use>
void magnify(const DeepPlane& small, const PlaneTaps& taps, const DeepPlane& like, const Use& use) {
    ScalingScratch scratch;
    std::vector<std::int16_t> row(static_cast<std::size_t>(like.width() + RowTaps::kGroup));
    RowScaler<DeepPlane> scaler(taps, small, {0, 0, like.width(), like.height()}, scratch);
    for (int y = 0; y < like.height(); ++y) {
        scalingKernels().deepColumns(scaler.row(y), like.width(), kDeepBits, row.data());
        use(y, row.data());
    }
}

void fillUniformly(const BackgroundArt& art, Planes& planes) {
    const auto color = levels(yccFromRgb(art.colorAt(0.5, 0.5)));
    for (std::size_t p = 0; p < 3; ++p) {
        // A whole level, so that an even colour stays even.
        const std::int16_t level = deep(std::round(color[p]));
        for (int y = 0; y < planes[p].height(); ++y) std::fill_n(planes[p].row(y), planes[p].width(), level);
    }
}

/// Colours at the nodes of a coarse grid; node `kMargin` lies at the output's corner.
Planes colorNodes(const BackgroundArt& art, PixelSize size, double spacing) {
    const int width = static_cast<int>(std::ceil(size.width / spacing)) + 2 * kMargin + 1;
    const int height = static_cast<int>(std::ceil(size.height / spacing)) + 2 * kMargin + 1;
    Planes nodes{DeepPlane(width, height), DeepPlane(width, height), DeepPlane(width, height)};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Rgb color = art.colorAt((x - kMargin) * spacing / size.width, (y - kMargin) * spacing / size.height);
            const auto level = levels(yccFromRgb(color));
            for (std::size_t p = 0; p < 3; ++p) nodes[p].row(y)[x] = deep(level[p]);
        }
    }
    return nodes;
}

void paintColors(const BackgroundArt& art, PixelSize size, Subsampling subsampling, Planes& planes) {
    const double spacing = std::max(1.0, std::max(size.width, size.height) / kColorNodes);
    const Planes nodes = colorNodes(art, size, spacing);
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
        magnify(small, taps, plane,
                [&](int y, const std::int16_t* row) { std::copy_n(row, plane.width(), plane.row(y)); });
    }
}

/// How much of what a plane's sample stands for lies inside a figure: a pixel, or the pixels around a chroma sample.
double sampleCoverage(const ArtShape& shape, const PlaneGrid& grid, int x, int y) {
    if (grid.divisor == 1) return shape.coverage(x + 0.5, y + 0.5);
    double sum = 0;
    for (int row = 0; row < 2; ++row)
        for (int column = -1; column <= 1; ++column)
            sum += (column == 0 ? 2 : 1) * shape.coverage(2 * x + column + 0.5, 2 * y + row + 0.5);
    return sum / 8;
}

void paintShape(const ArtShape& shape, Subsampling subsampling, Planes& planes) {
    const auto top = levels(yccFromRgb(shape.top));
    const auto bottom = levels(yccFromRgb(shape.bottom));
    const PixelBox output{0, 0, planes[0].width(), planes[0].height()};
    for (int p = 0; p < 3; ++p) {
        const auto index = static_cast<std::size_t>(p);
        const PlaneGrid grid = planeGrid(p, subsampling);
        const PixelBox box = planeBox(shape.bounds().intersected(output), grid);
        for (int y = box.y; y < box.bottom(); ++y) {
            std::int16_t* row = planes[index].row(y);
            for (int x = box.x; x < box.right(); ++x) {
                const double fill = shape.fillPosition(grid.x.origin + x * grid.x.step,
                                                       grid.y.origin + y * grid.y.step);
                const double alpha = sampleCoverage(shape, grid, x, y) *
                                     std::lerp(shape.topAlpha, shape.bottomAlpha, fill);
                const double above = std::lerp(top[index], bottom[index], fill) * kDeepOne;
                row[x] = static_cast<std::int16_t>(std::lround(std::lerp(static_cast<double>(row[x]), above, alpha)));
            }
        }
    }
}

/// A sample after another at an opacity of 32768 has been laid over it.
std::int16_t laidOver(int below, int above, int opacity) {
    return static_cast<std::int16_t>(below + (((above - below) * opacity + (1 << 14)) >> 15));
}

void layGrain(Planes& planes) {
    constexpr int kLastRank = BlueNoise::kSide * BlueNoise::kSide - 1;
    for (std::size_t p = 0; p < 3; ++p) {
        for (int y = 0; y < planes[p].height(); ++y) {
            std::array<int, BlueNoise::kSide> greys{};
            for (int x = 0; x < BlueNoise::kSide; ++x)
                greys[static_cast<std::size_t>(x)] =
                    p == 0 ? kBlack[0] + 219 * kDeepOne * BlueNoise::tile().rank(x, y) / kLastRank : kBlack[p];
            std::int16_t* row = planes[p].row(y);
            for (int x = 0; x < planes[p].width(); ++x)
                row[x] = laidOver(row[x], greys[static_cast<std::size_t>(x % BlueNoise::kSide)], kGrainAlpha);
        }
    }
}

} // namespace

StageImage::StageImage(const CompositionInstruction& instruction, Subsampling subsampling)
    : m_size(instruction.outputSize),
      m_subsampling(subsampling),
      m_plain(emptyPlanes(m_size, subsampling)) {
    paintBackground(instruction);
    castShadow(instruction);
}

void StageImage::paintBackground(const CompositionInstruction& instruction) {
    const BackgroundArt art(instruction.background, m_size);
    if (art.isUniform()) {
        fillUniformly(art, m_plain);
        return;
    }
    paintColors(art, m_size, m_subsampling, m_plain);
    for (const ArtShape& shape : art.shapes()) paintShape(shape, m_subsampling, m_plain);
    if (art.hasGrain()) layGrain(m_plain);
}

void StageImage::castShadow(const CompositionInstruction& instruction) {
    const StageGeometry stage = stageGeometry(instruction, DenseZoomFrame{});
    m_hasShadow = instruction.shadowIntensity > 0 && instruction.videoNaturalSize.width > 0 &&
                  instruction.videoNaturalSize.height > 0;
    if (!m_hasShadow) return;

    const ShadowField field(stageShadow({stage.frameRect, stage.cornerRadius}, instruction.shadowIntensity), m_size);
    m_shadowed = m_plain;
    for (int p = 0; p < 3; ++p) {
        const auto index = static_cast<std::size_t>(p);
        DeepPlane& plane = m_shadowed[index];
        const PlaneTaps taps = field.taps(planeGrid(p, m_subsampling), plane.width(), plane.height());
        magnify(field.nodes(), taps, plane, [&](int y, const std::int16_t* opacity) {
            std::int16_t* row = plane.row(y);
            for (int x = 0; x < plane.width(); ++x)
                row[x] = laidOver(row[x], kBlack[index], std::max<int>(opacity[x], 0));
        });
    }
}

} // namespace morvelin
