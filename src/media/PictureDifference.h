// Where two pictures differ: what a decoded frame has changed. Pure.
#pragma once

#include <vector>

#include "platform/Picture.h"

namespace morvelin {

/// Boxes in which two pictures of one size and subsampling differ, exactly, in tiles of 64 × 16 pixels. Neighbouring
/// tiles are one box, as are equal runs in rows below each other. In reading order of their top left corners.
[[nodiscard]] std::vector<PixelBox> differingBoxes(const Picture& a, const Picture& b);

} // namespace morvelin
