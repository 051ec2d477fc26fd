// The other end of the agents' entrance: what the command line uses to reach the running program.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "core/base/OwnedDescriptor.h"
#include "core/base/JSON.h"
#include "core/base/Result.h"
#include "core/base/Time.h"

namespace morvelin {

/// One connection, used for one request at a time; blocks the caller.
class MCPClient {
public:
    /// Nothing when no program serves at the socket.
    [[nodiscard]] static std::optional<MCPClient> connect(const std::filesystem::path& socketURL);

    /// What to do when an answer is long in coming; done once per request.
    struct Impatience {
        Seconds after;
        std::function<void()> action;
    };

    /// Sends a request and waits for its answer without end. Gives the answer's `result`; fails with the message of an
    /// error answer, or with one sentence when the program has gone away.
    Result<JSONValue, std::string> request(const std::string& method, JSONValue params,
                                           const Impatience& impatience = {});

private:
    explicit MCPClient(OwnedDescriptor socket) : m_socket(std::move(socket)) {}

    [[nodiscard]] bool writeAll(std::string_view bytes);
    [[nodiscard]] std::optional<std::string> readLine(const Impatience& impatience);

    OwnedDescriptor m_socket;
    std::string m_received;
    int m_lastID = 0;
};

} // namespace morvelin
