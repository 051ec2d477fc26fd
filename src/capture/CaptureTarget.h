// What a take records. Chosen by whoever starts the take.
#pragma once

#include <string>
#include <variant>

namespace morvelin {

/// A whole display.
struct DisplayTarget {
    std::string id; ///< as `Display::id`; empty: the primary display
};

using CaptureTarget = std::variant<DisplayTarget>;

} // namespace morvelin
