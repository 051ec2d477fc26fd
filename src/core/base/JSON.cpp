#include "core/base/JSON.h"

#include <fmt/format.h>

namespace morvelin {

std::string JSONError::description() const {
    const std::string place = path.empty() ? std::string("the top level") : fmt::format("“{}”", path);
    switch (kind) {
    case Kind::Syntax: return fmt::format("The data isn’t valid JSON: {}", detail);
    case Kind::MissingKey: return fmt::format("The key {} is missing.", place);
    case Kind::WrongType: return fmt::format("At {}: {}.", place, detail);
    case Kind::UnknownValue: return fmt::format("At {}: unknown value “{}”.", place, detail);
    }
    return {};
}

Result<JSONValue, JSONError> parseJSON(std::string_view text) {
    try {
        return JSONValue::parse(text);
    } catch (const JSONValue::exception& error) {
        return failure(JSONError{JSONError::Kind::Syntax, "", error.what()});
    }
}

std::string writeJSON(const JSONValue& value, JSONStyle style) {
    return value.dump(style == JSONStyle::Pretty ? 2 : -1, ' ', false, JSONValue::error_handler_t::replace);
}

const JSONValue* JSONReader::find(const char* key) const {
    const auto found = m_object.find(key);
    return found == m_object.end() ? nullptr : &*found;
}

namespace json {

JSONError wrongType(const char* expected, const JSONValue& found) {
    return JSONError{JSONError::Kind::WrongType, "",
                     fmt::format("{} was expected, {} was found", expected, found.type_name())};
}

std::optional<std::int64_t> wholeNumber(const JSONValue& value) {
    if (value.is_number_unsigned()) {
        const auto number = value.get<std::uint64_t>();
        if (!std::in_range<std::int64_t>(number)) return std::nullopt;
        return static_cast<std::int64_t>(number);
    }
    if (value.is_number_integer()) return value.get<std::int64_t>();
    if (!value.is_number_float()) return std::nullopt;
    const double number = value.get<double>();
    // 2^63 is the first double that a signed 64-bit integer cannot hold.
    if (number != std::trunc(number) || number >= 0x1p63 || number < -0x1p63) return std::nullopt;
    return static_cast<std::int64_t>(number);
}

JSONError inside(std::string outer, JSONError error) {
    if (!error.path.empty() && error.path.front() != '[') outer += '.';
    error.path = outer + error.path;
    return error;
}

} // namespace json

} // namespace morvelin
