// The program's MCP server: a session for each connection of the local socket, all with one router and one consent.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "agent/MCPConnection.h"
#include "agent/MCPConsent.h"
#include "agent/MCPSession.h"
#include "agent/MCPSocketListener.h"
#include "agent/ToolCatalogue.h"
#include "agent/ToolRouter.h"
#include "core/base/DescriptorLoop.h"
#include "core/base/Log.h"
#include "core/base/Result.h"

namespace morvelin {

struct MCPServerOptions {
    std::filesystem::path socket; ///< `mcpSocketURL` of the user's home folder
    std::string version = "1.0.0";
    /// The connections that need no consent.
    std::function<bool(const MCPConnection&)> isTrusted = [](const MCPConnection& each) { return each.isOwnProgram(); };
    MCPConnectionLimits limits = {};
};

/// One for the process, on the main thread. Router, consent and loop must outlive it and every call under way.
class MCPServer {
public:
    MCPServer(ToolRouter& router, MCPConsent& consent, DescriptorLoop& loop, const std::vector<MCPTool>& tools,
              MCPServerOptions options);
    MCPServer(const MCPServer&) = delete;
    MCPServer& operator=(const MCPServer&) = delete;
    ~MCPServer() { stop(); }

    /// Opens the socket, and tells the log that it did, or why the program runs without agents.
    Result<void, MCPSocketError> start(const Log& log);
    /// Ends all connections and removes the socket. Calls under way go on; their replies are dropped.
    void stop();

    [[nodiscard]] bool isRunning() const { return m_listener.isListening(); }
    [[nodiscard]] std::size_t connectionCount() const { return m_connections.size(); }

private:
    void accept(std::shared_ptr<MCPConnection> connection);

    ToolRouter& m_router;
    MCPConsent& m_consent;
    DescriptorLoop& m_loop;
    std::function<bool(const MCPConnection&)> m_isTrusted;
    std::shared_ptr<const MCPServerFacts> m_facts;
    MCPSocketListener m_listener;
    std::map<const MCPConnection*, std::shared_ptr<MCPConnection>> m_connections;
};

} // namespace morvelin
