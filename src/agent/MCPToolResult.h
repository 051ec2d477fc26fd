// What a tool call gives back, before it becomes a message on the wire.
#pragma once

#include <optional>
#include <string>

#include "core/base/JSON.h"

namespace morvelin {

struct MCPToolResult {
    std::string text; ///< what an agent reads: the pretty form of `structured`, a sentence, or why the tool failed
    bool isError = false;
    std::optional<JSONValue> structured;
    std::optional<std::string> imagePNG; ///< the bytes of a PNG file

    /// The facts of a tool that worked, in both forms.
    [[nodiscard]] static MCPToolResult success(JSONValue structured) {
        std::string text = writeJSON(structured, JSONStyle::Pretty);
        return {std::move(text), false, std::move(structured), {}};
    }
    [[nodiscard]] static MCPToolResult failed(std::string reason) { return {std::move(reason), true, {}, {}}; }
};

} // namespace morvelin
