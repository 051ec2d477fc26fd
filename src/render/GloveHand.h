// The cartoon glove: white and puffy, with three darts and a rolled cuff. Used by `HandArt`.
#pragma once

#include "render/Canvas.h"

namespace morvelin {

/// The glove with its finger straight up, touching at the origin; 1041 units high.
void drawGloveHand(double bend, Canvas& canvas);

} // namespace morvelin
