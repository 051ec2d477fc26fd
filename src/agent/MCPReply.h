// The replies that leave on an agent's connection, as whole lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "agent/MCPToolResult.h"
#include "agent/ToolCatalogue.h"
#include "agent/ToolRouter.h"
#include "core/base/JSON.h"

namespace morvelin {

enum class JSONRPCError : int {
    ParseError = -32700,
    InvalidRequest = -32600,
    MethodNotFound = -32601,
    InvalidParams = -32602,
    InternalError = -32603,
};

// Results are put together as text: the list of tools is written once for all clients, and an image of megabytes goes
// straight into the line that carries it.

/// `result` is the text of a JSON value.
[[nodiscard]] std::string resultReply(const JSONValue& id, std::string_view result);
[[nodiscard]] std::string errorReply(const JSONValue& id, JSONRPCError code, const std::string& message);

[[nodiscard]] std::string initializeResult(const std::string& version);
[[nodiscard]] std::string toolListResult(const std::vector<MCPTool>& tools);
[[nodiscard]] std::string toolCallResult(const MCPToolResult& result);
[[nodiscard]] std::string resourceListResult(const std::vector<MCPResource>& resources);
[[nodiscard]] std::string resourceReadResult(const std::string& uri, const JSONValue& content);

} // namespace morvelin
