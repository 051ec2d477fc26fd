#include "agent/MCPServer.h"

#include <fmt/format.h>

#include "agent/MCPReply.h"

namespace morvelin {

namespace {

/// A reply may come long after its connection has ended.
Task<void> answer(std::shared_ptr<MCPSession> session, std::weak_ptr<MCPConnection> connection, std::string line) {
    std::optional<std::string> reply = co_await session->reply(std::move(line));
    const auto open = connection.lock();
    if (open && reply) open->send(std::move(*reply));
}

} // namespace

MCPServer::MCPServer(ToolRouter& router, MCPConsent& consent, DescriptorLoop& loop, const std::vector<MCPTool>& tools,
                     MCPServerOptions options)
    : m_router(router),
      m_consent(consent),
      m_loop(loop),
      m_isTrusted(std::move(options.isTrusted)),
      m_facts(std::make_shared<const MCPServerFacts>(
          MCPServerFacts{initializeResult(options.version), toolListResult(tools)})),
      m_listener(std::move(options.socket), loop, options.limits) {
    m_listener.onConnection([this](std::shared_ptr<MCPConnection> connection) { accept(std::move(connection)); });
}

Result<void, MCPSocketError> MCPServer::start(const Log& log) {
    auto started = m_listener.start();
    if (started)
        log(fmt::format("[Morvelin] MCP server listening at {}", m_listener.url().string()));
    else
        log(fmt::format("[Morvelin] MCP server unavailable: {}", started.error().description()));
    return started;
}

void MCPServer::stop() {
    m_listener.stop();
    m_connections.clear();
}

void MCPServer::accept(std::shared_ptr<MCPConnection> connection) {
    if (!isRunning()) return;
    const MCPPeer peer = m_isTrusted(*connection) ? MCPPeer::OwnProgram : MCPPeer::Client;
    const auto session = std::make_shared<MCPSession>(m_router, m_consent, m_facts, peer);
    connection->onLine([this, session, weak = std::weak_ptr(connection)](std::string line) {
        m_loop.spawn(answer(session, weak, std::move(line)));
    });
    connection->onClosed([this, key = connection.get()] { m_connections.erase(key); });
    m_connections.emplace(connection.get(), connection);
    connection->start();
}

} // namespace morvelin
