#include "storage/HeaderText.h"

#include <simdjson.h>

namespace morvelin::ProjectBundle {

struct PlainReader::Object {
    simdjson::dom::parser parser;
    simdjson::dom::object members;

    /// Of a key that is there twice the last counts, as for the codec.
    [[nodiscard]] std::optional<simdjson::dom::element> find(std::string_view key) const {
        std::optional<simdjson::dom::element> found;
        for (const auto& [name, value] : members)
            if (name == key) found = value;
        return found;
    }
};

PlainReader::PlainReader(const std::string& text)
    : m_object(std::make_unique<Object>()),
      m_isPlain(m_object->parser.parse(text).get(m_object->members) == simdjson::SUCCESS) {}

PlainReader::~PlainReader() = default;

bool PlainReader::has(std::string_view key) const { return m_isPlain && m_object->find(key).has_value(); }

std::optional<std::string_view> PlainReader::text(std::string_view key) const {
    const auto value = m_object->find(key);
    std::string_view text;
    if (!value || value->get(text) != simdjson::SUCCESS) return std::nullopt;
    return text;
}

bool PlainReader::read(std::string_view key, std::string& value) const {
    const auto found = text(key);
    if (found) value = *found;
    return found.has_value();
}

bool PlainReader::read(std::string_view key, Date& value) const {
    const auto found = text(key);
    const auto date = found ? Date::parse(*found) : std::nullopt;
    value = date.value_or(value);
    return date.has_value();
}

bool PlainReader::read(std::string_view key, Seconds& value) const {
    const auto found = m_object->find(key);
    return found && found->get(value.value) == simdjson::SUCCESS;
}

} // namespace morvelin::ProjectBundle
