// Pictures at another size, by the filters with which films are drawn: stills, and backgrounds of the user's. Pure.
#pragma once

#include "platform/Picture.h"

namespace morvelin {

/// The size with its longer side at `longEdge` pixels, if it was longer; each side at least 1.
[[nodiscard]] PixelSize sizeWithin(PixelSize size, int longEdge);

/// The picture in 4:4:4, scaled to `size`.
[[nodiscard]] Picture resized(const Picture& picture, PixelSize size);

/// The picture as opaque pixels, scaled to `size`.
[[nodiscard]] Image imageOf(const Picture& picture, PixelSize size);

} // namespace morvelin
