// The one JSON encoder and decoder that every persisted record goes through.
//
// A record names its fields once, in a function `describe(fields, record)` beside the record:
//
//     template <class Fields>
//     void describe(Fields& fields, Same<Fields, FocusKeyframe>& key) {
//         fields.required("id", key.id);
//         fields.withDefault("fadeOutDuration", key.fadeOutDuration, 0.5_s);
//         fields.optional("target", key.target);
//     }
//
// An enumeration names its raw values in `constexpr auto rawValues(std::type_identity<E>)`, an array of pairs.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <nlohmann/json.hpp>

#include "core/base/Date.h"
#include "core/base/Identity.h"
#include "core/base/Result.h"
#include "core/base/Time.h"

namespace morvelin {

/// A JSON value: boolean, number, string, array, object or null.
using JSONValue = nlohmann::json;

/// Why a text or a value is not the record that was expected; `path` leads to the place, e.g. "fragments[2].speed".
struct JSONError {
    enum class Kind { Syntax, MissingKey, WrongType, UnknownValue };

    Kind kind = Kind::Syntax;
    std::string path;
    std::string detail;

    [[nodiscard]] std::string description() const;
};

Result<JSONValue, JSONError> parseJSON(std::string_view text);

/// Whether every number in it has a JSON form.
[[nodiscard]] bool isFinite(const JSONValue& value);

enum class JSONStyle { Compact, Pretty };
/// UTF-8 text with sorted keys and unescaped slashes; bytes that are no UTF-8 become replacement characters, and whole
/// numbers below 2^53 have no fraction.
[[nodiscard]] std::string writeJSON(const JSONValue& value, JSONStyle style);

/// `Record` when fields are read, `const Record` when they are written: the one argument type of `describe`.
template <class Fields, class Record>
using Same = std::conditional_t<Fields::kWrites, const Record, Record>;

// ---------------------------------------------------------------------------------------------- writing

class JSONWriter;
template <class T>
[[nodiscard]] JSONValue toJSON(const T& value);

/// Takes a record's fields in turn and makes the JSON object.
class JSONWriter {
public:
    static constexpr bool kWrites = true;

    template <class T>
    void required(const char* key, const T& value) {
        object[key] = toJSON(value);
    }
    template <class T>
    void optional(const char* key, const std::optional<T>& value) {
        if (value) object[key] = toJSON(*value);
    }
    template <class T, class Default>
    void withDefault(const char* key, const T& value, const Default&) {
        object[key] = toJSON(value);
    }

    JSONValue object = JSONValue::object();
};

// ---------------------------------------------------------------------------------------------- reading

template <class T>
Result<T, JSONError> fromJSON(const JSONValue& value);

/// Takes a record's fields in turn out of a JSON object and keeps the first thing that is wrong.
class JSONReader {
public:
    static constexpr bool kWrites = false;

    explicit JSONReader(const JSONValue& object) : m_object(object) {}

    template <class T>
    void required(const char* key, T& value) {
        if (m_error) return;
        if (const JSONValue* found = find(key))
            read(key, *found, value);
        else
            m_error = JSONError{JSONError::Kind::MissingKey, key, ""};
    }
    template <class T>
    void optional(const char* key, std::optional<T>& value) {
        if (m_error) return;
        value.reset();
        if (const JSONValue* found = find(key); found && !found->is_null()) read(key, *found, value.emplace());
    }
    template <class T, class Default>
    void withDefault(const char* key, T& value, const Default& fallback) {
        if (m_error) return;
        const JSONValue* found = find(key);
        if (found && !found->is_null())
            read(key, *found, value);
        else
            value = T(fallback);
    }

    const std::optional<JSONError>& error() const { return m_error; }

private:
    const JSONValue* find(const char* key) const;
    template <class T>
    void read(const char* key, const JSONValue& found, T& value);

    const JSONValue& m_object;
    std::optional<JSONError> m_error;
};

// ---------------------------------------------------------------------------------------------- details

namespace json {

template <class T>
concept Enumeration = std::is_enum_v<T>;
template <class T>
concept Number = std::is_arithmetic_v<T> && !std::is_same_v<T, bool>;

template <class T>
struct IsMoment : std::false_type {};
template <class Clock>
struct IsMoment<Moment<Clock>> : std::true_type {};
template <class T>
concept TimeValue = std::is_same_v<T, Seconds> || IsMoment<T>::value;

template <class T>
struct IsList : std::false_type {};
template <class T>
struct IsList<std::vector<T>> : std::true_type {};
template <class T>
struct IsMap : std::false_type {};
template <class T>
struct IsMap<std::map<std::string, T>> : std::true_type {};

JSONError wrongType(const char* expected, const JSONValue& found);
/// A whole number, also when it is written as 2.0.
std::optional<std::int64_t> wholeNumber(const JSONValue& value);
/// Puts the path of an enclosing value before an error's own.
JSONError inside(std::string outer, JSONError error);
JSONError insideElement(std::size_t index, JSONError error);

template <Enumeration E>
std::string_view rawValue(E value) {
    for (const auto& [each, raw] : rawValues(std::type_identity<E>{}))
        if (each == value) return raw;
    return {};
}

template <Enumeration E>
std::optional<E> fromRawValue(std::string_view text) {
    for (const auto& [each, raw] : rawValues(std::type_identity<E>{}))
        if (raw == text) return each;
    return std::nullopt;
}

template <class T>
Result<std::vector<T>, JSONError> listFromJSON(const JSONValue& value) {
    if (!value.is_array()) return failure(wrongType("a list", value));
    std::vector<T> list;
    list.reserve(value.size());
    for (std::size_t i = 0; i < value.size(); ++i) {
        auto element = fromJSON<T>(value[i]);
        if (!element) return failure(insideElement(i, std::move(element).error()));
        list.push_back(std::move(*element));
    }
    return list;
}

template <class T>
Result<std::map<std::string, T>, JSONError> mapFromJSON(const JSONValue& value) {
    if (!value.is_object()) return failure(wrongType("an object", value));
    std::map<std::string, T> map;
    for (const auto& [key, each] : value.items()) {
        auto element = fromJSON<T>(each);
        if (!element) return failure(inside(key, std::move(element).error()));
        map.emplace(key, std::move(*element));
    }
    return map;
}

template <class Record>
Result<Record, JSONError> recordFromJSON(const JSONValue& value) {
    if (!value.is_object()) return failure(wrongType("an object", value));
    Record record{};
    JSONReader reader(value);
    describe(reader, record);
    if (const auto& error = reader.error()) return failure(*error);
    return record;
}

} // namespace json

template <class T>
JSONValue toJSON(const T& value) {
    if constexpr (std::is_same_v<T, JSONValue> || std::is_same_v<T, bool> || json::Number<T> ||
                  std::is_same_v<T, std::string>) {
        return JSONValue(value);
    } else if constexpr (json::TimeValue<T>) {
        return JSONValue(value.value);
    } else if constexpr (std::is_same_v<T, UUID> || std::is_same_v<T, Date>) {
        return JSONValue(value.text());
    } else if constexpr (json::Enumeration<T>) {
        return JSONValue(std::string(json::rawValue(value)));
    } else if constexpr (json::IsList<T>::value) {
        JSONValue list = JSONValue::array();
        for (const auto& element : value) list.push_back(toJSON(element));
        return list;
    } else if constexpr (json::IsMap<T>::value) {
        JSONValue object = JSONValue::object();
        for (const auto& [key, element] : value) object[key] = toJSON(element);
        return object;
    } else {
        JSONWriter writer;
        describe(writer, value);
        return std::move(writer.object);
    }
}

template <class T>
Result<T, JSONError> fromJSON(const JSONValue& value) {
    if constexpr (std::is_same_v<T, JSONValue>) {
        return value;
    } else if constexpr (std::is_same_v<T, bool>) {
        if (!value.is_boolean()) return failure(json::wrongType("true or false", value));
        return value.get<bool>();
    } else if constexpr (std::is_integral_v<T>) {
        const auto number = json::wholeNumber(value);
        if (!number || !std::in_range<T>(*number)) return failure(json::wrongType("a whole number", value));
        return static_cast<T>(*number);
    } else if constexpr (json::Number<T>) {
        if (!value.is_number()) return failure(json::wrongType("a number", value));
        return value.get<T>();
    } else if constexpr (json::TimeValue<T>) {
        if (!value.is_number()) return failure(json::wrongType("a number", value));
        return T(value.get<double>());
    } else if constexpr (std::is_same_v<T, std::string>) {
        if (!value.is_string()) return failure(json::wrongType("a text", value));
        return value.get<std::string>();
    } else if constexpr (std::is_same_v<T, UUID> || std::is_same_v<T, Date>) {
        const char* expected = std::is_same_v<T, UUID> ? "a UUID" : "an ISO 8601 date";
        if (!value.is_string()) return failure(json::wrongType(expected, value));
        const auto parsed = T::parse(value.get_ref<const std::string&>());
        if (!parsed) return failure(json::wrongType(expected, value));
        return *parsed;
    } else if constexpr (json::Enumeration<T>) {
        if (!value.is_string()) return failure(json::wrongType("a text", value));
        const auto& raw = value.get_ref<const std::string&>();
        const auto parsed = json::fromRawValue<T>(raw);
        if (!parsed) return failure(JSONError{JSONError::Kind::UnknownValue, "", raw});
        return *parsed;
    } else if constexpr (json::IsList<T>::value) {
        return json::listFromJSON<typename T::value_type>(value);
    } else if constexpr (json::IsMap<T>::value) {
        return json::mapFromJSON<typename T::mapped_type>(value);
    } else {
        return json::recordFromJSON<T>(value);
    }
}

template <class T>
void JSONReader::read(const char* key, const JSONValue& found, T& value) {
    auto decoded = fromJSON<T>(found);
    if (decoded)
        value = std::move(*decoded);
    else
        m_error = json::inside(key, std::move(decoded).error());
}

/// Reads a whole text as one record.
template <class T>
Result<T, JSONError> decode(std::string_view text) {
    auto value = parseJSON(text);
    if (!value) return passOn(std::move(value));
    return fromJSON<T>(*value);
}

} // namespace morvelin
