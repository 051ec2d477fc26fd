// Where a tool's name becomes work: what a session, and the command line, hand their calls to.
#pragma once

#include <string>
#include <vector>

#include "agent/MCPToolResult.h"
#include "core/base/JSON.h"
#include "core/base/Result.h"
#include "core/base/Task.h"

namespace morvelin {

/// Something an agent can read by its address.
struct MCPResource {
    std::string uri;
    std::string name;
    std::string description;
    std::string mimeType = "application/json";
};

/// Lives as long as the server; called on the main thread only.
class ToolRouter {
public:
    virtual ~ToolRouter() = default;

    /// Runs one tool. `arguments` is passed as the client sent it; null means none. A tool that fails gives a result
    /// with `isError`; several calls may be under way at once.
    [[nodiscard]] virtual Task<MCPToolResult> call(std::string tool, JSONValue arguments, std::string clientName) = 0;

    /// The fixed resource first, then one for each project.
    [[nodiscard]] virtual std::vector<MCPResource> resources() = 0;
    /// Fails with one sentence.
    [[nodiscard]] virtual Result<JSONValue, std::string> readResource(const std::string& uri) = 0;
};

} // namespace morvelin
