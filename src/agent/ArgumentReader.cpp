#include "agent/ArgumentReader.h"

#include "core/base/JSONCoercion.h"

namespace morvelin {

const JSONValue* ArgumentReader::member(const char* name) const {
    if (!m_arguments.is_object()) return nullptr;
    const auto found = m_arguments.find(name);
    return found != m_arguments.end() && !found->is_null() ? &*found : nullptr;
}

std::optional<std::string> ArgumentReader::text(const char* name) const {
    const JSONValue* value = member(name);
    if (value == nullptr || !value->is_string()) return std::nullopt;
    return value->get<std::string>();
}

std::optional<double> ArgumentReader::number(const char* name) const {
    const JSONValue* value = member(name);
    return value != nullptr ? coercedNumber(*value) : std::nullopt;
}

std::optional<std::int64_t> ArgumentReader::integer(const char* name) const {
    const JSONValue* value = member(name);
    return value != nullptr ? coercedInteger(*value) : std::nullopt;
}

bool ArgumentReader::flag(const char* name, bool otherwise) const {
    const JSONValue* value = member(name);
    if (value == nullptr) return otherwise;
    if (value->is_boolean()) return value->get<bool>();
    if (*value == "true") return true;
    if (*value == "false") return false;
    return otherwise;
}

} // namespace morvelin
