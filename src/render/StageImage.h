// The stage at zoom 1: background, grain and shadow in deep samples, so that no gradient shows bands. Made once for a
// film; immutable, shared by its compositors.
#pragma once

#include "platform/Picture.h"
#include "render/BackgroundPainting.h"
#include "render/CompositionInstruction.h"

namespace morvelin {

enum class StageShadow { None, Cast };

class StageImage {
public:
    StageImage(const CompositionInstruction& instruction, Subsampling subsampling);

    [[nodiscard]] PixelSize size() const { return m_size; }
    [[nodiscard]] Subsampling subsampling() const { return m_subsampling; }
    [[nodiscard]] const DeepPlane& plane(int index, StageShadow shadow) const {
        const auto& planes = shadow == StageShadow::Cast && m_hasShadow ? m_shadowed : m_plain;
        return planes[static_cast<std::size_t>(index)];
    }

private:
    void castShadow(const CompositionInstruction& instruction);

    PixelSize m_size;
    Subsampling m_subsampling;
    bool m_hasShadow = false;
    DeepPlanes m_plain;
    DeepPlanes m_shadowed; ///< made only where there is a shadow
};

} // namespace morvelin
