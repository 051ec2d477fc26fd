#include "core/base/JSONCoercion.h"

#include <cmath>

#include <glib.h>

namespace morvelin {

namespace {

/// What `strtod` would skip, and a text that ends before it began.
bool isSkipped(char c) { return c == '\0' || (c >= '\t' && c <= '\r') || c == ' '; }

std::optional<double> parsedNumber(const std::string& text) {
    if (text.empty() || isSkipped(text.front())) return std::nullopt;
    char* end = nullptr;
    const double number = g_ascii_strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size()) return std::nullopt;
    return number;
}

} // namespace

std::optional<double> coercedNumber(const JSONValue& value) {
    std::optional<double> number;
    if (value.is_number()) number = value.get<double>();
    if (value.is_string()) number = parsedNumber(value.get_ref<const std::string&>());
    if (number && !std::isfinite(*number)) return std::nullopt;
    return number;
}

std::optional<std::int64_t> coercedInteger(const JSONValue& value) {
    const auto number = coercedNumber(value);
    // 2^63 is the first double that a signed 64-bit integer cannot hold.
    if (!number || *number >= 0x1p63 || *number < -0x1p63) return std::nullopt;
    return static_cast<std::int64_t>(*number);
}

} // namespace morvelin
