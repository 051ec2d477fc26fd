// How far a magnified view may move before it would show past its edge.
#pragma once

#include "core/Geometry.h"

namespace morvelin {

/// The nearest centre at which a view magnified `zoom` times stays inside the stage; the middle at zoom 1 or below.
/// `inset` is the style's padding as a fraction of the stage (0.45 at most counts): a view may pan over it too.
[[nodiscard]] NormalizedPoint clampCenter(NormalizedPoint center, double zoom, double inset);

} // namespace morvelin
