// What a take records. Chosen by whoever starts the take.
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "platform/Screen.h"

namespace morvelin {

/// A whole display.
struct DisplayTarget {
    std::string id; ///< as `Display::id`; empty: the primary display
};

/// One window, wherever it is, and also while others cover it.
struct WindowTarget {
    /// What a person or an agent calls it: the title in any case, or else a part of it. Empty matches no window.
    std::string title;
    std::optional<WindowID> id; ///< tried before the title
};

/// A rectangle of points, origin top-left.
struct PointRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const PointRect&) const = default;
};

/// A part of one display.
struct AreaTarget {
    PointRect rect;
    /// As `Display::id`: the rectangle counts from that display's corner. Empty: from the desktop's corner, and the
    /// display is the one that holds the rectangle's middle.
    std::string displayID;
};

using CaptureTarget = std::variant<DisplayTarget, WindowTarget, AreaTarget>;

} // namespace morvelin
