// The hand-drawn ovals that say "look here": when and where one shows, and its ink. Used by the frame plan and the
// overlay layer.
#pragma once

#include <cstdint>
#include <vector>

#include "core/Geometry.h"
#include "core/base/Time.h"
#include "render/CompositionInstruction.h"
#include "render/OverlaySprite.h"
#include "render/StageGeometry.h"
#include "render/VectorPath.h"

namespace morvelin {

/// One oval at one moment, clipped to the rounded picture.
struct FocusOval {
    Rectangle rect; ///< that it goes around, in output pixels
    double lineWidth = 0;
    CodableColor color; ///< its alpha holds the fade
    std::uint64_t seed = 0;

    bool operator==(const FocusOval&) const = default;
};

/// The ovals at `t`, in the order of their keys.
[[nodiscard]] std::vector<FocusOval> focusOvalsAt(const CompositionInstruction& instruction, const StageGeometry& stage,
                                                  EditTime t);

/// The points of a hand-drawn ring around a rectangle, `count` + 1 of them, against the clock; none for an empty
/// rectangle or fewer than 8. Equal seeds wobble in the same way.
[[nodiscard]] std::vector<PathPoint> handDrawnOval(const Rectangle& rect, std::uint64_t seed, int count);

/// The oval as it is drawn, not yet clipped.
[[nodiscard]] Tile drawn(const FocusOval& oval, PixelSize output);

} // namespace morvelin
