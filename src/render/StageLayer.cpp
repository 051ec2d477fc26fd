#include "render/StageLayer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "render/BlueNoise.h"

namespace morvelin {

namespace {

/// Chroma at the picture's edges stands for pixels this far around.
constexpr double kSeam = 2;

constexpr std::size_t kindOf(int plane) { return plane == 0 ? 0 : 1; }

bool standsStill(const Camera& camera) { return camera == Camera{}; }

/// The first even coordinate from `value` on, inside `low`..`high`.
int evenFrom(double value, int low, int high) {
    const double limited = std::clamp(value, static_cast<double>(low), static_cast<double>(high));
    return std::min(static_cast<int>(std::ceil(limited / 2)) * 2, high);
}

int evenUpTo(double value, int low, int high) {
    const double limited = std::clamp(value, static_cast<double>(low), static_cast<double>(high));
    return std::max(static_cast<int>(std::floor(limited / 2)) * 2, low);
}

void addBand(const PixelBox& band, int from, int to, std::vector<PixelBox>& parts) {
    for (const PixelBox& part :
         {PixelBox{band.x, band.y, from - band.x, band.height}, PixelBox{to, band.y, band.right() - to, band.height}})
        if (!part.isEmpty()) parts.push_back(part);
}

} // namespace

std::vector<PixelBox> outsidePicture(const StageGeometry& stage, const PixelBox& box) {
    if (!stage.showsPicture) return {box};
    const Rectangle& frame = stage.frameRect;
    const double r = stage.cornerRadius;
    // Left to right and top to bottom: where the straight edges begin and end, and where the rounded corners do.
    const int left = evenFrom(frame.x + kSeam, box.x, box.right());
    const int right = std::max(left, evenUpTo(frame.right() - kSeam, box.x, box.right()));
    const int innerLeft = evenFrom(frame.x + r + kSeam, box.x, box.right());
    const int innerRight = std::max(innerLeft, evenUpTo(frame.right() - r - kSeam, box.x, box.right()));
    const int top = evenFrom(frame.y + kSeam, box.y, box.bottom());
    const int bottom = std::max(top, evenUpTo(frame.bottom() - kSeam, box.y, box.bottom()));
    const int innerTop = std::clamp(evenFrom(frame.y + r + kSeam, box.y, box.bottom()), top, bottom);
    const int innerBottom = std::clamp(evenUpTo(frame.bottom() - r - kSeam, box.y, box.bottom()), innerTop, bottom);

    std::vector<PixelBox> parts;
    addBand({box.x, box.y, box.width, top - box.y}, box.right(), box.right(), parts);
    addBand({box.x, top, box.width, innerTop - top}, innerLeft, innerRight, parts);
    addBand({box.x, innerTop, box.width, innerBottom - innerTop}, left, right, parts);
    addBand({box.x, innerBottom, box.width, bottom - innerBottom}, innerLeft, innerRight, parts);
    addBand({box.x, bottom, box.width, box.bottom() - bottom}, box.right(), box.right(), parts);
    return parts;
}

StageLayer::StageLayer(std::shared_ptr<const StageImage> image)
    : m_image(std::move(image)),
      m_phases(catmullRomPhases()) {}

void StageLayer::prepare(const StageGeometry& stage) {
    const bool cameraMoved = stage.camera != m_stage.camera;
    m_stage = stage;
    if (!cameraMoved || standsStill(stage.camera)) return;

    const Camera& camera = stage.camera;
    for (int plane = 0; plane < 2; ++plane) {
        const PlaneGrid grid = planeGrid(plane, m_image->subsampling());
        const DeepPlane& samples = m_image->plane(plane, StageShadow::None);
        const AxisMapping x = axisMapping(grid.x, grid.x, -camera.offsetX, camera.zoom);
        const AxisMapping y = axisMapping(grid.y, grid.y, -camera.offsetY, camera.zoom);
        m_taps[kindOf(plane)] = {rowTaps(axisTaps(m_phases, x, 0, samples.width(), samples.width()), SampleWidth::Deep),
                                 axisTaps(m_phases, y, 0, samples.height(), samples.height())};
    }
}

void StageLayer::draw(const PixelBox& box, Picture& out) {
    for (const PixelBox& part : outsidePicture(m_stage, box)) drawPart(part, out);
}

void StageLayer::drawPart(const PixelBox& box, Picture& out) {
    const BlueNoise& noise = BlueNoise::tile();
    const StageShadow shadow = m_stage.castsShadow ? StageShadow::Cast : StageShadow::None;
    static constexpr std::int16_t kAsItIs[] = {kWeightOne, 0};
    for (int p = 0; p < 3; ++p) {
        const DeepPlane& samples = m_image->plane(p, shadow);
        const PixelBox part = planeBox(box, planeGrid(p, m_image->subsampling()));
        const auto drawRow = [&](int y, const ColumnTaps& rows) {
            scalingKernels().ditheredColumns(rows, part.width, noise.ditherRow(part.x, y),
                                             out.plane(p).row(y) + part.x);
        };
        if (standsStill(m_stage.camera)) {
            for (int y = part.y; y < part.bottom(); ++y) {
                const std::int16_t* const rows[] = {samples.row(y) + part.x, samples.row(y) + part.x};
                drawRow(y, {rows, kAsItIs, 2, 0});
            }
        } else {
            RowScaler<DeepPlane> scaler(m_taps[kindOf(p)], samples, part, m_scratch);
            for (int y = part.y; y < part.bottom(); ++y) drawRow(y, scaler.row(y));
        }
    }
}

} // namespace morvelin
