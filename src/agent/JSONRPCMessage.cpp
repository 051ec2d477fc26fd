#include "agent/JSONRPCMessage.h"

namespace morvelin {

namespace {

/// Takes a member out of the object, so that arguments of a megabyte are not copied.
std::optional<JSONValue> taken(JSONValue& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return std::nullopt;
    return std::move(*found);
}

} // namespace

Result<JSONRPCMessage, JSONError> JSONRPCMessage::decode(std::string_view line) {
    // The library takes a NUL for the end of the text, and what follows would go unread.
    if (line.contains('\0')) return failure(JSONError{JSONError::Kind::Syntax, "", "it holds a NUL byte"});
    auto value = parseJSON(line);
    if (!value) return passOn(std::move(value));
    if (!value->is_object()) return failure(json::wrongType("an object", *value));
    JSONRPCMessage message;
    message.id = taken(*value, "id");
    message.params = taken(*value, "params");
    if (auto method = taken(*value, "method")) {
        if (!method->is_string()) return failure(json::inside("method", json::wrongType("a text", *method)));
        message.method = std::move(method->get_ref<std::string&>());
    }
    return message;
}

} // namespace morvelin
