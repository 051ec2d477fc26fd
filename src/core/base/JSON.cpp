#include "core/base/JSON.h"

#include <fmt/format.h>

namespace morvelin {

namespace {

/// Copying, comparing and writing a value takes stack for each level, so a hostile file could end the program.
constexpr int kMaxDepth = 512;

bool isTooDeep(std::string_view text) {
    int depth = 0;
    bool isInString = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '"') isInString = !isInString;
        if (isInString && c == '\\') ++at;
        if (isInString) continue;
        if (c == '[' || c == '{') ++depth;
        if (c == ']' || c == '}') --depth;
        if (depth > kMaxDepth) return true;
    }
    return false;
}

/// The library's reason without the tag in brackets that it begins with.
std::string withoutTag(std::string_view reason) {
    const auto end = reason.find("] ");
    return std::string(end == std::string_view::npos ? reason : reason.substr(end + 2));
}

} // namespace

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
    if (isTooDeep(text)) return failure(JSONError{JSONError::Kind::Syntax, "", "it is nested too deep"});
    try {
        return JSONValue::parse(text);
    } catch (const JSONValue::exception& error) {
        return failure(JSONError{JSONError::Kind::Syntax, "", withoutTag(error.what())});
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

JSONError insideElement(std::size_t index, JSONError error) {
    return inside(fmt::format("[{}]", index), std::move(error));
}

} // namespace json

} // namespace morvelin
