#include "render/StageImage.h"

#include <algorithm>

#include "render/StageGeometry.h"
#include "render/StageShadow.h"

namespace morvelin {

namespace {

DeepPlanes emptyPlanes(PixelSize size, Subsampling subsampling) {
    DeepPlanes planes;
    for (int p = 0; p < 3; ++p) {
        const PixelBox box = planeBox({0, 0, size.width, size.height}, planeGrid(p, subsampling));
        planes[static_cast<std::size_t>(p)] = DeepPlane(box.width, box.height);
    }
    return planes;
}

} // namespace

StageImage::StageImage(const CompositionInstruction& instruction, Subsampling subsampling)
    : m_size(instruction.outputSize),
      m_subsampling(subsampling),
      m_plain(emptyPlanes(m_size, subsampling)) {
    paintBackground(instruction, subsampling, m_plain);
    castShadow(instruction);
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
        scaleDeepPlane(field.nodes(), taps, plane, [&](int y, const std::int16_t* opacity) {
            std::int16_t* row = plane.row(y);
            for (int x = 0; x < plane.width(); ++x)
                row[x] = laidOver(row[x], kDeepBlack[index], std::max<int>(opacity[x], 0));
        });
    }
}

} // namespace morvelin
