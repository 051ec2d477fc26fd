// How one style's pointer is drawn. Used by `CursorArtwork`.
#pragma once

#include <functional>

#include "core/Style.h"
#include "render/Canvas.h"
#include "render/TileShadow.h"

namespace morvelin {

/// A pointer as a drawing.
struct CursorDrawing {
    double width = 0; ///< in units of the drawing, with all around the pointer
    double height = 0;
    int unit = 16; ///< pixels that a unit is drawn with
    PathPoint hotSpot;
    TileShadow shadow; ///< in units; none where it has no opacity
    std::function<void(Canvas&)> draw;
};

/// Pointers with smooth outlines.
[[nodiscard]] CursorDrawing inkPointer();
[[nodiscard]] CursorDrawing paperPointer();
[[nodiscard]] CursorDrawing amberPointer();
[[nodiscard]] CursorDrawing frostedAmberPointer();
[[nodiscard]] CursorDrawing frostedMonoPointer();
[[nodiscard]] CursorDrawing duskPointer();

/// Pointers made of large square pixels.
[[nodiscard]] CursorDrawing duskSpritePointer();
[[nodiscard]] CursorDrawing amberSpritePointer();
[[nodiscard]] CursorDrawing monoSpritePointer();

} // namespace morvelin
