// Which boxes of the screen to ask the server for, given the boxes that it reported as drawn upon.
#pragma once

#include <span>
#include <vector>

#include "platform/Picture.h"

namespace morvelin {

/// Boxes that together cover every box of `drawn`, merged where one larger request is cheaper than two.
/// They may overlap; their areas add up to no more than that of the box around them all.
[[nodiscard]] std::vector<PixelBox> planFetch(std::span<const PixelBox> drawn);

} // namespace morvelin
