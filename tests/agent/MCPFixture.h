// What the tests of the agents' entrance share: a router that does as it is told, and an agent's end of the socket.
#pragma once

#include <cstring>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "agent/MCPToolError.h"
#include "agent/SharedAnswer.h"
#include "agent/ToolCatalogue.h"
#include "agent/ToolRouter.h"
#include "capture/LoopRunner.h"
#include "core/base/OwnedDescriptor.h"

namespace morvelin {

/// Answers `echo` with its arguments and the client's name, `fail` with an error, `image` with a picture, and `wait` once
/// the test lets it go on.
class ScriptedRouter final : public ToolRouter {
public:
    Task<MCPToolResult> call(std::string tool, JSONValue arguments, std::string clientName) override {
        ++calls;
        if (tool == "echo")
            co_return MCPToolResult::success({{"arguments", std::move(arguments)}, {"client", clientName}});
        if (tool == "image") co_return MCPToolResult{"a picture", false, {}, image};
        if (tool == "wait") {
            co_await released->wait();
            co_return MCPToolResult::success({{"waited", true}});
        }
        co_return MCPToolResult::failed(MCPToolError(MCPToolError::UnknownTool{tool}).description());
    }
    std::vector<MCPResource> resources() override {
        return {{"morvelin://projects", "Morvelin projects", "Every .morvelin recording.", "application/json"}};
    }
    Result<JSONValue, std::string> readResource(const std::string& uri) override {
        if (uri != "morvelin://projects")
            return failure(MCPToolError(MCPToolError::UnknownResource{uri}).description());
        return JSONValue{{"projects", JSONValue::array()}};
    }

    int calls = 0;
    std::string image = "\x89PNG";
    std::shared_ptr<SharedAnswer<bool>> released = std::make_shared<SharedAnswer<bool>>();
};

inline std::vector<MCPTool> twoTools() {
    return {{"zoom", "Zooms.", {{"type", "object"}}}, {"cut", "Cuts “here”.", {{"type", "object"}}}};
}

/// An agent's end of the socket. Nothing here blocks; a test runs its loop until what it waits for has come.
class AgentEnd {
public:
    explicit AgentEnd(const std::filesystem::path& path) : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        m_isConnected = ::connect(m_socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    explicit AgentEnd(OwnedDescriptor socket) : m_socket(std::move(socket)), m_isConnected(true) {}

    [[nodiscard]] bool isConnected() const { return m_isConnected; }
    /// What does not fit into the socket waits for the next `pump`.
    void write(std::string_view bytes) {
        m_toWrite += bytes;
        pump();
    }
    void finishWriting() { ::shutdown(m_socket.get(), SHUT_WR); }
    void close() { m_socket.close(); }

    /// Writes and reads what can be without waiting.
    void pump() {
        const ssize_t sent = ::send(m_socket.get(), m_toWrite.data(), m_toWrite.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent > 0) m_toWrite.erase(0, static_cast<std::size_t>(sent));
        if (!reads) return;
        char buffer[0x10000];
        for (ssize_t count = 0; (count = ::recv(m_socket.get(), buffer, sizeof buffer, MSG_DONTWAIT)) >= 0;) {
            if (count == 0) hasEnded = true;
            if (count == 0) return;
            received.append(buffer, static_cast<std::size_t>(count));
        }
        if (errno != EAGAIN) hasEnded = true;
    }
    [[nodiscard]] bool hasWrittenAll() const { return m_toWrite.empty(); }

    [[nodiscard]] std::vector<std::string> lines() const {
        std::vector<std::string> all;
        for (std::size_t begin = 0, end = 0; (end = received.find('\n', begin)) != std::string::npos; begin = end + 1)
            all.push_back(received.substr(begin, end - begin));
        return all;
    }

    bool reads = true;
    bool hasEnded = false; ///< the other side has closed
    std::string received;

private:
    OwnedDescriptor m_socket;
    bool m_isConnected = false;
    std::string m_toWrite;
};

/// Runs the loop, and the agent's end, until the agent has that many whole lines. False after the limit.
inline bool runUntilLines(GLibEventLoop& loop, AgentEnd& agent, std::size_t count, Seconds limit = Seconds(20)) {
    return runUntil(
        loop,
        [&] {
            agent.pump();
            return agent.lines().size() >= count;
        },
        limit);
}

inline bool runUntilEnd(GLibEventLoop& loop, AgentEnd& agent, Seconds limit = Seconds(20)) {
    return runUntil(
        loop,
        [&] {
            agent.pump();
            return agent.hasEnded;
        },
        limit);
}

} // namespace morvelin
