// The small things over the picture: rings of clicks, the pointer, ovals and hands, and the caption on top of all; each
// drawn once into a sprite and kept while it stays the same. Owned by a compositor.
#pragma once

#include <vector>

#include "render/CaptionLayer.h"
#include "render/FramePlan.h"
#include "render/ImageLevels.h"
#include "render/OverlaySprite.h"
#include "render/SpriteSet.h"

namespace morvelin {

class OverlayLayer {
public:
    OverlayLayer(PixelSize output, Subsampling subsampling)
        : m_output(output),
          m_subsampling(subsampling),
          m_caption(output, subsampling) {}

    /// Makes the sprites of a plan. Adds the boxes of those that come, go or change to `boxes`.
    void prepare(const FramePlan& plan, std::vector<PixelBox>& boxes);
    /// Lays the parts in `box` of what belongs to the picture over what is there.
    void draw(const PixelBox& box, Picture& out) const;
    /// The same for the caption, which lies over the camera's bubble too.
    void drawCaption(const PixelBox& box, Picture& out) const { m_caption.draw(box, out); }

private:
    [[nodiscard]] OverlaySprite sprite(const Tile& tile) const { return {tile, m_output, m_subsampling}; }
    /// What is drawn in the picture ends at its rounded edge.
    [[nodiscard]] OverlaySprite clippedSprite(Tile tile) const;

    PixelSize m_output;
    Subsampling m_subsampling;
    RoundedRectangle m_clip;
    SpriteSet<PingRing> m_rings;
    SpriteSet<PointerPlacement> m_pointers;
    ImageLevels m_pointerLevels;
    SpriteSet<FocusOval> m_ovals;
    SpriteSet<TapTapHand> m_hands;
    CaptionLayer m_caption;
};

} // namespace morvelin
