// The small things over the picture: rings of clicks and the pointer, each drawn once into a sprite and kept while it
// stays the same. Owned by a compositor.
#pragma once

#include <optional>
#include <vector>

#include "render/FramePlan.h"
#include "render/OverlaySprite.h"

namespace morvelin {

class OverlayLayer {
public:
    OverlayLayer(PixelSize output, Subsampling subsampling) : m_output(output), m_subsampling(subsampling) {}

    /// Makes the sprites of a plan. Adds the boxes of those that come, go or change to `boxes`.
    void prepare(const FramePlan& plan, std::vector<PixelBox>& boxes);
    /// Lays the parts in `box` over what is there.
    void draw(const PixelBox& box, Picture& out) const;

private:
    struct Ring {
        PingRing ring;
        OverlaySprite sprite;
    };
    struct Pointer {
        PointerPlacement placement;
        OverlaySprite sprite;
    };

    [[nodiscard]] OverlaySprite ringSprite(const PingRing& ring, const RoundedRectangle& clip) const;
    void prepareRings(const FramePlan& plan, std::vector<PixelBox>& boxes);
    void preparePointer(const FramePlan& plan, std::vector<PixelBox>& boxes);

    PixelSize m_output;
    Subsampling m_subsampling;
    RoundedRectangle m_clip; ///< of the rings
    std::vector<Ring> m_rings;
    std::optional<Pointer> m_pointer;
};

} // namespace morvelin
