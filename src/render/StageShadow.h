// Soft shadows of rounded rectangles: the picture's on its background, the camera's bubble's on the picture. Used when
// a stage or a sprite is made.
#pragma once

#include "platform/Picture.h"
#include "render/OverlaySprite.h"
#include "render/PlaneScaling.h"
#include "render/RoundedCoverage.h"

namespace morvelin {

/// Where a shadow falls and how soft it is, in pixels.
struct ShadowShape {
    RoundedRectangle caster; ///< already moved to where its shadow falls
    double sigma = 0;        ///< standard deviation of the blur
    double opacity = 0;      ///< of black, 0..1
};

/// The shadow of a picture at zoom 1, straight below it. `intensity` counts up to 1.
[[nodiscard]] ShadowShape stageShadow(const RoundedRectangle& picture, double intensity);

/// A shadow sampled just densely enough for its softness: its opacity at any sample of a plane follows by smooth
/// interpolation.
class ShadowField {
public:
    /// `opacity` 1 is this value.
    static constexpr int kOpaque = 1 << 15;

    ShadowField(const ShadowShape& shape, PixelSize output);

    /// The taps that magnify `nodes` to a plane.
    [[nodiscard]] PlaneTaps taps(const PlaneGrid& grid, int width, int height) const;
    [[nodiscard]] const DeepPlane& nodes() const { return m_nodes; }

private:
    double m_spacing = 1; ///< pixels between two nodes; node `kMargin` lies at the output's corner
    DeepPlane m_nodes;
};

/// A shadow as black of its opacity, in a box of the output.
[[nodiscard]] Tile shadowTile(const ShadowShape& shape, const PixelBox& box);

} // namespace morvelin
