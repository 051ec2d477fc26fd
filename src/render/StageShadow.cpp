#include "render/StageShadow.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace morvelin {

namespace {

/// Nodes outside the output, for the interpolation at its edges.
constexpr int kMargin = 2;
/// Beyond this many deviations a Gaussian's tail is worth less than a tenth of a level.
constexpr double kReach = 3.5;
/// So many nodes to a deviation leave the interpolation's error far below a level.
constexpr double kNodesPerSigma = 3;

/// Opacities at nodes, rows one after the other.
struct Field {
    int width;
    int height;
    std::vector<float> values;

    Field(int w, int h) : width(w), height(h), values(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}
    float* row(int y) { return values.data() + static_cast<std::ptrdiff_t>(y) * width; }
    const float* row(int y) const { return values.data() + static_cast<std::ptrdiff_t>(y) * width; }
};

std::vector<float> gaussianWeights(double sigma) {
    const int reach = static_cast<int>(std::ceil(kReach * sigma));
    std::vector<float> weights;
    double sum = 0;
    for (int n = -reach; n <= reach; ++n) sum += std::exp(-n * n / (2 * sigma * sigma));
    for (int n = -reach; n <= reach; ++n)
        weights.push_back(static_cast<float>(std::exp(-n * n / (2 * sigma * sigma)) / sum));
    return weights;
}

/// `out` is smaller than `in` by the weights' reach on either side.
void blurRows(const Field& in, const std::vector<float>& weights, Field& out) {
    for (int y = 0; y < out.height; ++y) {
        float* to = out.row(y);
        for (std::size_t tap = 0; tap < weights.size(); ++tap) {
            const float* from = in.row(y) + tap;
            for (int x = 0; x < out.width; ++x) to[x] += from[x] * weights[tap];
        }
    }
}

void blurColumns(const Field& in, const std::vector<float>& weights, Field& out) {
    for (int y = 0; y < out.height; ++y) {
        float* to = out.row(y);
        for (std::size_t tap = 0; tap < weights.size(); ++tap) {
            const float* from = in.row(y + static_cast<int>(tap));
            for (int x = 0; x < out.width; ++x) to[x] += from[x] * weights[tap];
        }
    }
}

/// The share of each node's cell (a square around it) that the shape covers. `firstNode` is the number of node 0.
Field coveredCells(const RoundedRectangle& shape, double spacing, int firstNode, int width, int height) {
    const auto toCells = [&](double pixels) { return pixels / spacing - firstNode + 0.5; };
    const RoundedRectangle inCells{
        {toCells(shape.rect.x), toCells(shape.rect.y), shape.rect.width / spacing, shape.rect.height / spacing},
        shape.radius / spacing};
    Coverage coverage(inCells, width, 1);
    Field cells(width, height);
    for (int y = 0; y < height; ++y) {
        const CoverageRow& row = coverage.row(y);
        for (int x = row.begin; x < row.end; ++x)
            cells.row(y)[x] = static_cast<float>(row.weightAt(x)) / static_cast<float>(kCovered);
    }
    return cells;
}

} // namespace

ShadowShape stageShadow(const RoundedRectangle& picture, double intensity) {
    const double strength = std::clamp(intensity, 0.0, 1.0);
    const double side = picture.rect.smallerSide();
    ShadowShape shadow{picture, side * strength * 0.12 / 2, strength * 0.5};
    shadow.caster.rect.y += side * strength * 0.03;
    return shadow;
}

ShadowField::ShadowField(const ShadowShape& shape, PixelSize output)
    : m_spacing(std::max(1.0, shape.sigma / kNodesPerSigma)) {
    // A cell's own width blurs by a twelfth of its square; the rest is the Gaussian's.
    const double sigma = std::sqrt(std::max(shape.sigma * shape.sigma / (m_spacing * m_spacing) - 1.0 / 12, 0.01));
    const std::vector<float> weights = gaussianWeights(sigma);
    const int reach = static_cast<int>(weights.size() / 2);
    const int width = static_cast<int>(std::ceil(output.width / m_spacing)) + 2 * kMargin + 1;
    const int height = static_cast<int>(std::ceil(output.height / m_spacing)) + 2 * kMargin + 1;

    const Field cells = coveredCells(shape.caster, m_spacing, -kMargin - reach, width + 2 * reach, height + 2 * reach);
    Field across(width, height + 2 * reach);
    blurRows(cells, weights, across);
    Field blurred(width, height);
    blurColumns(across, weights, blurred);

    m_nodes = DeepPlane(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            m_nodes.row(y)[x] = static_cast<std::int16_t>(std::lround(blurred.row(y)[x] * shape.opacity * kOpaque));
}

PlaneTaps ShadowField::taps(const PlaneGrid& grid, int width, int height) const {
    const auto mapping = [&](const SampleGrid& samples) {
        return AxisMapping{samples.origin / m_spacing + kMargin, samples.step / m_spacing};
    };
    const PhaseTable phases = catmullRomPhases();
    return {rowTaps(axisTaps(phases, mapping(grid.x), 0, width, m_nodes.width()), SampleWidth::Deep),
            axisTaps(phases, mapping(grid.y), 0, height, m_nodes.height())};
}

Tile shadowTile(const ShadowShape& shape, const PixelBox& box) {
    Tile tile(box);
    if (box.isEmpty()) return tile;
    ShadowShape inBox = shape;
    inBox.caster.rect.x -= box.x;
    inBox.caster.rect.y -= box.y;
    const ShadowField field(inBox, {box.width, box.height});

    const PlaneTaps taps = field.taps({}, box.width, box.height);
    ScalingScratch scratch;
    std::vector<std::int16_t> opacities(static_cast<std::size_t>(box.width + RowTaps::kGroup));
    RowScaler<DeepPlane> scaler(taps, field.nodes(), {0, 0, box.width, box.height}, scratch);
    for (int y = 0; y < box.height; ++y) {
        scalingKernels().deepColumns(scaler.row(y), box.width, kDeepBits, opacities.data());
        Tile::Pixel* row = tile.row(box.y + y);
        for (int x = 0; x < box.width; ++x)
            row[x].alpha = static_cast<float>(std::max<int>(opacities[static_cast<std::size_t>(x)], 0)) /
                           static_cast<float>(ShadowField::kOpaque);
    }
    return tile;
}

} // namespace morvelin
