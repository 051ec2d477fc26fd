// The pointers, the hands and the ovals for the contact sheet, drawn as films show them.
#pragma once

#include "render/ArtSheet.h"

namespace morvelin {

/// Every style's pointer at once, three and six times its size, on light and on dark.
[[nodiscard]] ArtSection pointerArtSheet();
/// Both hands lifted, on their way and pressed, on light and on dark.
[[nodiscard]] ArtSection handArtSheet();
/// Moments of a double tap, of both hands.
[[nodiscard]] ArtSection doubleTapArtSheet();
/// Focus ovals of several shapes.
[[nodiscard]] ArtSection ovalArtSheet();

} // namespace morvelin
