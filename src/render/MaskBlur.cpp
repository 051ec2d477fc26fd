#include "render/MaskBlur.h"

#include <algorithm>
#include <cmath>

#include "render/BlueNoise.h"

namespace morvelin {

namespace {

/// From this deviation on (output samples) a grid is cheaper.
constexpr double kGridSigma = 6;
constexpr double kNodesPerSigma = 3;
/// Nodes outside the mask, for the interpolation at its edges.
constexpr int kMargin = 2;
/// How far, in deviations, a picture's sample is felt: the Gaussian's own reach and two nodes of the grid.
constexpr double kReach = 3.5 + 2 / kNodesPerSigma;

std::ptrdiff_t rowLength(const PixelBox& box) { return box.width + RowTaps::kGroup; }

} // namespace

MaskBlur::MaskBlur(const MaskPlacement& mask, const PicturePlacement& placement)
    : m_mask(mask),
      m_placement(placement),
      m_pixels(touchedPixels(mask.rect, placement.output)),
      m_kinds{makeKind(0), makeKind(1)} {}

MaskBlur::Kind MaskBlur::makeKind(int plane) const {
    const PlaneGrid grid = m_placement.outputGrid(plane);
    Kind kind;
    kind.coverage = Coverage({m_mask.rect, 0}, m_placement.output.width, grid.divisor);
    // The sample right of a mask's edge may stand for the pixel left of it too.
    const PixelBox spread =
        PixelBox{m_pixels.x, m_pixels.y, m_pixels.width + grid.divisor - 1, m_pixels.height}.intersected(
            {0, 0, m_placement.output.width, m_placement.output.height});
    kind.samples = planeBox(spread, grid).intersected(m_placement.visibleSamples(plane));
    if (kind.samples.isEmpty()) return kind;

    const double sigma = m_mask.sigma / grid.divisor;
    const int spacing = sigma < kGridSigma ? 1 : static_cast<int>(sigma / kNodesPerSigma);
    const int margin = spacing == 1 ? 0 : kMargin;
    const PhaseTable cubic = catmullRomPhases();
    const PixelSize picture = m_placement.pictureSamples(plane);
    const auto fromPicture = [&](AxisMapping mapping, int first, int count, int length) {
        const PhaseTable phases = gaussianPhases(sigma * mapping.step, mapping.step);
        return axisTaps(phases, {mapping.start + first * mapping.step, mapping.step * spacing}, -margin, count, length);
    };
    const auto fromGrid = [&](int count, int nodes) {
        return axisTaps(cubic, {static_cast<double>(kMargin), 1.0 / spacing}, 0, count, nodes);
    };
    kind.spacing = spacing;
    if (spacing == 1)
        kind.nodes = {kind.samples.width, kind.samples.height};
    else
        kind.nodes = {kind.samples.width / spacing + 2 * kMargin + 1, kind.samples.height / spacing + 2 * kMargin + 1};
    kind.toBlurred = {rowTaps(fromPicture(m_placement.mappingX(plane), kind.samples.x, kind.nodes.width, picture.width),
                              SampleWidth::Byte),
                      fromPicture(m_placement.mappingY(plane), kind.samples.y, kind.nodes.height, picture.height)};
    if (spacing > 1)
        kind.toOutput = {rowTaps(fromGrid(kind.samples.width, kind.nodes.width), SampleWidth::Deep),
                         fromGrid(kind.samples.height, kind.nodes.height)};
    return kind;
}

PixelBox MaskBlur::reachOf(const PixelBox& box) const {
    const double scale = std::min(m_placement.scaleX(), m_placement.scaleY());
    // Lanczos after a narrow blur spans three samples of chroma; a blur's ends are rounded up to whole samples.
    const double kernel = 6 / std::min(scale, 1.0) + 4;
    PixelBox felt = m_pixels;
    felt.width += 2; // chroma right of an edge stands for the edge's last column too
    return m_placement.outputBox(box, kReach * m_mask.sigma / scale + kernel).intersected(felt);
}

void MaskBlur::forgetPicture() { m_grids = {}; }

void MaskBlur::fillGrid(const Kind& kind, const PlaneView<const std::uint8_t>& picture, DeepPlane& grid) {
    grid = DeepPlane(kind.nodes.width, kind.nodes.height);
    const PixelBox all{-kMargin, -kMargin, kind.nodes.width, kind.nodes.height};
    RowScaler scaler(kind.toBlurred, picture, all, m_scratch);
    for (int y = all.y; y < all.bottom(); ++y)
        scalingKernels().deepColumns(scaler.row(y), all.width, kRowBits, grid.row(y - all.y));
}

void MaskBlur::blur(int plane, const PlaneView<const std::uint8_t>& picture, const PixelBox& box) {
    m_kind = plane == 0 ? 0 : 1;
    const Kind& kind = m_kinds[m_kind];
    m_box = box;
    m_part = box.intersected(kind.samples);
    if (m_part.isEmpty()) return;

    m_blurred.resize(static_cast<std::size_t>(rowLength(m_part)) * static_cast<std::size_t>(m_part.height));
    const PixelBox local{m_part.x - kind.samples.x, m_part.y - kind.samples.y, m_part.width, m_part.height};
    const auto rowAt = [&](int y) { return m_blurred.data() + (y - local.y) * rowLength(m_part); };
    if (kind.spacing == 1) {
        RowScaler scaler(kind.toBlurred, picture, local, m_scratch);
        for (int y = local.y; y < local.bottom(); ++y)
            scalingKernels().columns(scaler.row(y), local.width, sampleRange(plane), rowAt(y));
        return;
    }
    DeepPlane& grid = m_grids[static_cast<std::size_t>(plane)];
    if (grid.width() == 0) fillGrid(kind, picture, grid);
    RowScaler scaler(kind.toOutput, grid, local, m_scratch);
    for (int y = local.y; y < local.bottom(); ++y) {
        const DitherRow dither = BlueNoise::tile().ditherRow(m_part.x, y + kind.samples.y);
        scalingKernels().ditheredColumns(scaler.row(y), local.width, dither, rowAt(y));
    }
}

void MaskBlur::layOver(int y, std::uint8_t* row) {
    if (y < m_part.y || y >= m_part.bottom()) return;
    const std::uint8_t* blurred = m_blurred.data() + (y - m_part.y) * rowLength(m_part);
    blendCovered(m_kinds[m_kind].coverage.row(y), m_part.x, m_part.right(), blurred, row + (m_part.x - m_box.x));
}

} // namespace morvelin
