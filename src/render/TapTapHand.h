// The hand that taps twice and says "read this": its motion, its place and its shadow. Used by the frame plan and the
// overlay layer; the art itself is `HandArt`.
#pragma once

#include <vector>

#include "core/Geometry.h"
#include "core/Keyframes.h"
#include "core/base/Time.h"
#include "render/CompositionInstruction.h"
#include "render/OverlaySprite.h"
#include "render/StageGeometry.h"

namespace morvelin {

/// One hand at one moment, clipped with its shadow to the rounded picture.
struct TapTapHand {
    TapTapStyle style = TapTapStyle::Pointer;
    NormalizedPoint tip; ///< of its finger, moved by how far it is lifted; output pixels
    double height = 0;   ///< of the whole hand at rest, in output pixels
    double bend = 0;     ///< towards the press, 0..1
    double opacity = 1;  ///< 0..1

    bool operator==(const TapTapHand&) const = default;
};

/// How far the hand is off the surface at `p`, 0..1 of its span: 1 is lifted, 0 is pressed.
[[nodiscard]] double tapTapLift(double p);

/// The hands at `t`, in the order of their keys.
[[nodiscard]] std::vector<TapTapHand> tapTapHandsAt(const CompositionInstruction& instruction,
                                                    const StageGeometry& stage, EditTime t);

/// The hand with its shadow as it is drawn, not yet clipped.
[[nodiscard]] Tile drawn(const TapTapHand& hand, PixelSize output);

} // namespace morvelin
