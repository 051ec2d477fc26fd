// The monitors of an X desktop as displays that can be recorded.
#pragma once

#include <vector>

#include "platform/x11/X11Connection.h"

namespace morvelin {

/// The monitors, as RandR 1.5 tells them; a server without it has one display, "screen".
Result<std::vector<Display>, ScreenError> displaysOf(const X11Connection& connection);

/// The display with this id, or `DisplayNotFound`.
Result<Display, ScreenError> displayNamed(const X11Connection& connection, const std::string& id);

} // namespace morvelin
