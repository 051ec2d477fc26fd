// Lenient readings of a JSON value for outside callers that write numbers as text.
#pragma once

#include <cstdint>
#include <optional>

#include "core/base/JSON.h"

namespace morvelin {

/// A number as it is, or a text that is one whole number in C notation without space before it. Never infinite or NaN.
[[nodiscard]] std::optional<double> coercedNumber(const JSONValue& value);

/// The same, cut toward zero; nothing when that does not fit.
[[nodiscard]] std::optional<std::int64_t> coercedInteger(const JSONValue& value);

} // namespace morvelin
