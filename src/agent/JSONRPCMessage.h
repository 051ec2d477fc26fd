// One decoded line of an agent's connection.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/base/JSON.h"

namespace morvelin {

/// A request has a method and an id, a notification no id, a reply to a request of ours no method. JSON null counts as
/// absent, and other members are not looked at.
struct JSONRPCMessage {
    std::optional<JSONValue> id;
    std::optional<std::string> method;
    std::optional<JSONValue> params;

    /// Fails for what is no JSON, no object, or has a method that is no text.
    [[nodiscard]] static Result<JSONRPCMessage, JSONError> decode(std::string_view line);
};

} // namespace morvelin
