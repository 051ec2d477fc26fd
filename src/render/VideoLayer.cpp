#include "render/VideoLayer.h"

#include <algorithm>
#include <cmath>

namespace morvelin {

namespace {

/// Steps to which the width of a reducing kernel is rounded, so that both axes and small drifts share a table.
constexpr double kWidthSteps = 1024;
/// Pixels of the picture that a place's kernel spans to either side at scale 1 and above; chroma's are twice as wide.
constexpr double kKernelReach = 6;

constexpr std::size_t kindOf(int plane) { return plane == 0 ? 0 : 1; }

} // namespace

VideoLayer::VideoLayer(PixelSize output, Subsampling subsampling) : m_output(output), m_subsampling(subsampling) {}

void VideoLayer::prepare(const FramePlan& plan, const Picture& picture) {
    m_isVisible = plan.stage.showsPicture;
    if (!m_isVisible) return;
    const PicturePlacement placement{plan.stage.frameRect, picture.size(), picture.subsampling(), m_output,
                                     m_subsampling};
    const RoundedRectangle shape{plan.stage.frameRect, plan.stage.cornerRadius};
    const bool moved = placement != m_placement || shape != m_shape;
    if (moved) {
        m_placement = placement;
        m_shape = shape;
        prepareTaps(0);
        prepareTaps(1);
    }
    if (moved || plan.masks != m_maskPlacements) {
        m_maskPlacements = plan.masks;
        m_masks.clear();
        for (const MaskPlacement& mask : plan.masks) m_masks.emplace_back(mask, m_placement);
    }
}

const PhaseTable& VideoLayer::phasesFor(double step) {
    const double width = step <= 1 ? 1 : std::ceil(step * kWidthSteps) / kWidthSteps;
    SteppedPhases& phases = m_phases[width == 1 ? 0 : 1];
    if (phases.step != width) phases = {width, lanczosPhases(width)};
    return phases.table;
}

void VideoLayer::prepareTaps(int plane) {
    const std::size_t kind = kindOf(plane);
    const PixelBox samples = m_placement.visibleSamples(plane);
    const PixelSize picture = m_placement.pictureSamples(plane);
    const AxisMapping x = m_placement.mappingX(plane);
    const AxisMapping y = m_placement.mappingY(plane);
    m_samples[kind] = samples;
    m_taps[kind].x = rowTaps(axisTaps(phasesFor(x.step), x, samples.x, samples.width, picture.width),
                             SampleWidth::Byte);
    m_taps[kind].y = axisTaps(phasesFor(y.step), y, samples.y, samples.height, picture.height);
    m_coverage[kind] = Coverage(m_shape, m_output.width, m_placement.outputGrid(plane).divisor);
}

void VideoLayer::forgetPicture() {
    for (MaskBlur& mask : m_masks) mask.forgetPicture();
}

void VideoLayer::draw(const Picture& picture, const PixelBox& box, Picture& out) {
    if (!m_isVisible) return;
    for (int plane = 0; plane < 3; ++plane) {
        const PixelBox samples = planeBox(box, m_placement.outputGrid(plane)).intersected(m_samples[kindOf(plane)]);
        if (!samples.isEmpty()) drawPlane(plane, picture.plane(plane), samples, out);
    }
}

void VideoLayer::drawPlane(int plane, const PlaneView<const std::uint8_t>& picture, const PixelBox& box, Picture& out) {
    for (MaskBlur& mask : m_masks) mask.blur(plane, picture, box);
    m_row.resize(static_cast<std::size_t>(box.width));
    Coverage& coverage = m_coverage[kindOf(plane)];
    RowScaler scaler(m_taps[kindOf(plane)], picture, box, m_scratch);
    for (int y = box.y; y < box.bottom(); ++y) {
        const CoverageRow& covered = coverage.row(y);
        ColumnTaps rows = scaler.row(y);
        std::uint8_t* to = out.plane(plane).row(y) + box.x;
        // What the picture wholly hides is written at once; only edges and masks are mixed.
        const bool isPlain = m_masks.empty() && covered.innerWeight == kCovered;
        const int innerBegin = isPlain ? std::clamp(covered.innerBegin, box.x, box.right()) : box.right();
        const int innerEnd = isPlain ? std::clamp(covered.innerEnd, innerBegin, box.right()) : box.right();
        mixSamples(plane, rows, covered, {box.x, y, innerBegin - box.x, 1}, to);
        rows.first += innerBegin - box.x;
        scalingKernels().columns(rows, innerEnd - innerBegin, sampleRange(plane), to + (innerBegin - box.x));
        rows.first += innerEnd - innerBegin;
        mixSamples(plane, rows, covered, {innerEnd, y, box.right() - innerEnd, 1}, to + (innerEnd - box.x));
    }
}

/// Lays a run of one row over what is there, as far as the picture covers it.
void VideoLayer::mixSamples(int plane, const ColumnTaps& rows, const CoverageRow& covered, const PixelBox& run,
                            std::uint8_t* to) {
    if (run.isEmpty()) return;
    scalingKernels().columns(rows, run.width, sampleRange(plane), m_row.data());
    for (MaskBlur& mask : m_masks) mask.layOver(run.y, m_row.data());
    blendCovered(covered, run.x, run.right(), m_row.data(), to);
}

void VideoLayer::addReach(const PixelBox& box, std::vector<PixelBox>& boxes) const {
    if (!m_isVisible) return;
    const double reduction = 1 / std::min({m_placement.scaleX(), m_placement.scaleY(), 1.0});
    boxes.push_back(m_placement.outputBox(box, kKernelReach * reduction + 2));
    for (const MaskBlur& mask : m_masks) boxes.push_back(mask.reachOf(box));
}

} // namespace morvelin
