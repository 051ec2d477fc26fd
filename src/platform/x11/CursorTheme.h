// The pointer images of the desktop's theme at sizes larger than the screen shows, so that a magnified pointer is crisp.
#pragma once

#include <optional>
#include <string>

#include "platform/Pointer.h"

namespace morvelin {

/// The shown pointer with its image taken from the theme in a denser form, when the theme `theme` (empty: the user's
/// default) holds a pointer `name` that looks, at the shown size, exactly like what is shown. Otherwise `shown`.
[[nodiscard]] PointerShape denserShape(PointerShape shown, const std::string& name, const std::string& theme);

/// The theme's plain arrow as it shows where pointers of `nominalSize` pixels are wanted; identity 0. Nothing when the theme has none.
[[nodiscard]] std::optional<PointerShape> themeArrow(const std::string& theme, int nominalSize);

} // namespace morvelin
