// The pointing hand: warm, with a cuff and a sleeve. Used by `HandArt`.
#pragma once

#include "render/Canvas.h"

namespace morvelin {

/// The hand with its finger straight up, touching at the origin; about 430 units long.
void drawPointerHand(double bend, Canvas& canvas);

} // namespace morvelin
