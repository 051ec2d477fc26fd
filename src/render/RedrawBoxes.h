// From the places that differ between two frames to the boxes that are worth drawing. Pure.
#pragma once

#include <vector>

#include "platform/Picture.h"

namespace morvelin {

/// The boxes' area inside the output as fewer boxes: even in all coordinates (an odd output's last row and column
/// aside), without empty ones, and joined where one box around two costs hardly more than both.
void joinRedrawBoxes(PixelSize output, std::vector<PixelBox>& boxes);

} // namespace morvelin
