#include "core/base/JSON.h"

#include <cmath>

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

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Just behind the closing quote of a text whose opening quote lies before `at`.
std::size_t endOfText(std::string_view json, std::size_t at) {
    for (;; ++at) {
        at = json.find('"', at);
        std::size_t escapes = 0;
        while (json[at - 1 - escapes] == '\\') ++escapes;
        if (escapes % 2 == 0) return at + 1;
    }
}

/// Whether a fraction of nothing begins here, as in 5.0.
bool isEmptyFraction(std::string_view json, std::size_t at) {
    return json[at] == '.' && json[at + 1] == '0' && (at + 2 == json.size() || !isDigit(json[at + 2])) &&
           (at + 2 == json.size() || json[at + 2] != 'e');
}

/// The library turns to exponents at 10^15, below the last number that has all its whole neighbours.
bool isExponentOfLongNumber(std::string_view json, std::size_t at) {
    return json.substr(at, 4) == "e+15" && isDigit(json[at - 1]) && (at + 4 == json.size() || !isDigit(json[at + 4]));
}

/// Writes whole numbers below 2^53 without a fraction, as other encoders do, in what the library wrote. One pass over
/// the finished text costs a fifth of the writing at most; a changed copy of the value would double it.
std::string withPlainWholeNumbers(std::string json) {
    std::string plain;
    std::size_t taken = 0;
    const auto replace = [&](std::size_t begin, std::size_t end, std::string_view by) {
        plain.append(json, taken, begin - taken).append(by);
        taken = end;
    };
    for (std::size_t at = 0; at < json.size(); ++at) {
        if (json[at] == '"') {
            at = endOfText(json, at + 1) - 1;
        } else if (isEmptyFraction(json, at)) {
            replace(at, at + 2, "");
        } else if (json[at] == 'e' && isExponentOfLongNumber(json, at)) {
            std::size_t begin = at;
            while (begin > 0 && (isDigit(json[begin - 1]) || json[begin - 1] == '.' || json[begin - 1] == '-')) --begin;
            const double number = JSONValue::parse(json.data() + begin, json.data() + at + 4).get<double>();
            const bool isWhole = number == std::trunc(number) && std::abs(number) < 0x1p53;
            if (isWhole) replace(begin, at + 4, fmt::format("{:.0f}", number));
        }
    }
    if (taken == 0) return json;
    return plain.append(json, taken);
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

bool isFinite(const JSONValue& value) {
    if (value.is_number_float()) return std::isfinite(value.get<double>());
    if (value.is_structured()) return std::ranges::all_of(value, isFinite);
    return true;
}

std::string writeJSON(const JSONValue& value, JSONStyle style) {
    return withPlainWholeNumbers(
        value.dump(style == JSONStyle::Pretty ? 2 : -1, ' ', false, JSONValue::error_handler_t::replace));
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
