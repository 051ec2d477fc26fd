// The two hands that tap: drawn from outlines, with a finger that bends as it presses. Used by `TapTapHand`.
#pragma once

#include "core/Keyframes.h"
#include "render/Canvas.h"

namespace morvelin {

/// A hand's measures at rest; the finger touches at the drawing's origin.
struct HandMeasures {
    double height = 0;   ///< of the whole hand, in units of the drawing
    PathPoint direction; ///< from the fingertip into the hand
};

[[nodiscard]] HandMeasures handMeasures(TapTapStyle style);

/// What a hand may touch at any bend, around its fingertip, in hand heights.
[[nodiscard]] Rectangle handReach(TapTapStyle style);

/// A hand whose finger touches at `tip`, `height` high; `bend` is 0 (at rest) to 1 (pressed).
void drawHand(TapTapStyle style, PathPoint tip, double height, double bend, Canvas& canvas);

} // namespace morvelin
