// The area of the desktop that an agent's 0–1 positions span: a display, or what is being recorded. A value.
#pragma once

#include <algorithm>
#include <cmath>
#include <string>

#include "core/Geometry.h"
#include "platform/Pointer.h"

namespace morvelin {

struct PointerSpace {
    PixelBox rect; ///< desktop pixels
    std::string label;

    /// The pixel at a position. The far edges lie on the last pixel, not on the first one of a display beside.
    [[nodiscard]] DesktopPoint at(NormalizedPoint position) const {
        return {std::min(std::floor(rect.x + position.x * rect.width), rect.right() - 1.0),
                std::min(std::floor(rect.y + position.y * rect.height), rect.bottom() - 1.0)};
    }
};

} // namespace morvelin
