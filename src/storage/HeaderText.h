// Decodes the record that a list shows of a project out of its header's text: the same as the codec, several times as fast.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "core/base/JSON.h"

namespace morvelin::ProjectBundle {

/// Takes a record's fields out of a JSON object, as `JSONReader` does, but gives up on anything that isn't plain. Then the
/// codec has the last word, so this reader may refuse too much but never accept too much.
class PlainReader {
public:
    static constexpr bool kWrites = false;

    /// The text must outlive the reader.
    explicit PlainReader(const std::string& text);
    PlainReader(const PlainReader&) = delete;
    PlainReader& operator=(const PlainReader&) = delete;
    ~PlainReader();

    template <class T>
    void required(const char* key, T& value) {
        m_isPlain = m_isPlain && read(key, value);
    }
    template <class T>
    void optional(const char* key, std::optional<T>& value) {
        if (has(key)) required(key, value.emplace());
    }

    /// Whether all that was asked for has been read.
    [[nodiscard]] bool isPlain() const { return m_isPlain; }

private:
    struct Object;

    [[nodiscard]] bool has(std::string_view key) const;
    [[nodiscard]] std::optional<std::string_view> text(std::string_view key) const;
    bool read(std::string_view key, std::string& value) const;
    bool read(std::string_view key, Date& value) const;
    bool read(std::string_view key, Seconds& value) const;
    template <json::Enumeration E>
    bool read(std::string_view key, E& value) const {
        const auto raw = text(key);
        const auto known = raw ? json::fromRawValue<E>(*raw) : std::nullopt;
        value = known.value_or(value);
        return known.has_value();
    }

    std::unique_ptr<Object> m_object;
    bool m_isPlain;
};

template <class Record>
Result<Record, JSONError> decodeHeader(const std::string& text) {
    Record record{};
    PlainReader reader(text);
    describe(reader, record);
    if (reader.isPlain()) return record;
    return decode<Record>(text);
}

} // namespace morvelin::ProjectBundle
