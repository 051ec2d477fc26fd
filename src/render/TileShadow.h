// The soft shadow that a drawing of any shape casts on what lies below it. Used by overlays and by pointer artwork.
#pragma once

#include "render/OverlaySprite.h"
#include "render/VectorPath.h"

namespace morvelin {

/// A black shadow; lengths in pixels of the tile.
struct TileShadow {
    PathPoint offset;   ///< from what casts it
    double sigma = 0;   ///< standard deviation of the blur
    double opacity = 0; ///< where it is deepest

    /// How far beyond its caster it can be seen, whatever the direction.
    [[nodiscard]] double reach() const;
};

/// Lays the shadow of `caster` under what a tile holds. The caster's pixels begin at `casterBox`, which reaches beyond
/// the tile as far as what lies there may shade it; outside of it nothing casts a shadow.
void layShadow(const TileShadow& shadow, const Image& caster, const PixelBox& casterBox, Tile& tile);

/// A drawing over its own shadow, as much of it as the image holds.
[[nodiscard]] Image withShadow(const Image& drawing, const TileShadow& shadow);

} // namespace morvelin
