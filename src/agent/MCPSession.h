// What one agent connection may do and is answered: lines become Model Context Protocol behaviour here.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "agent/JSONRPCMessage.h"
#include "agent/MCPConsent.h"
#include "agent/ToolRouter.h"
#include "core/base/Task.h"

namespace morvelin {

/// What all sessions of a server answer alike; each is the text of a JSON value.
struct MCPServerFacts {
    std::string initializeResult;
    std::string toolListResult;
};

/// Who stands at the other end: the user's own copy of this program needs no consent.
enum class MCPPeer { Client, OwnProgram };

/// Main thread only. Several lines may be under way at once; whoever runs `reply` keeps the session until it has ended.
/// The router and the consent must outlive that.
class MCPSession {
public:
    MCPSession(ToolRouter& router, MCPConsent& consent, std::shared_ptr<const MCPServerFacts> facts, MCPPeer peer)
        : m_router(router),
          m_consent(consent),
          m_facts(std::move(facts)),
          m_peer(peer) {}

    /// The whole line to send back, or nothing for what isn't answered.
    [[nodiscard]] Task<std::optional<std::string>> reply(std::string line);

    [[nodiscard]] const std::string& clientName() const { return m_clientName; }
    [[nodiscard]] bool isAuthorized() const { return m_isAuthorized; }

private:
    struct Request {
        JSONValue id;
        JSONValue params; ///< null when absent
    };

    Task<std::string> answer(std::string method, Request request);
    Task<std::string> initialize(Request request);
    Task<std::string> callTool(Request request);
    std::string readResource(const Request& request);
    std::string refusal(const Request& request) const;

    ToolRouter& m_router;
    MCPConsent& m_consent;
    std::shared_ptr<const MCPServerFacts> m_facts;
    MCPPeer m_peer;
    std::string m_clientName = "an MCP client";
    bool m_isAuthorized = false;
};

} // namespace morvelin
