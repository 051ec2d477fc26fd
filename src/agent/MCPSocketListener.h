// The program's entrance for agents: a UNIX stream socket of which one copy of the program at a time is the owner.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

#include <sys/types.h>

#include "agent/MCPConnection.h"
#include "agent/MCPSocketError.h"
#include "core/base/DescriptorLoop.h"
#include "core/base/OwnedDescriptor.h"
#include "core/base/Result.h"
#include "core/base/WakeUp.h"

namespace morvelin {

/// Where agents find the program; `home` is the user's home folder. The relay knows the same path.
[[nodiscard]] std::filesystem::path mcpSocketURL(const std::filesystem::path& home);

/// Idle or listening. All operations on the loop's thread; accepting has a thread of its own, "com.morvelin.mcp.listener"
/// (Linux takes 15 letters of it).
class MCPSocketListener {
public:
    using OnConnection = std::function<void(std::shared_ptr<MCPConnection> connection)>;

    /// Touches nothing yet. The loop must outlive the listener and its connections.
    MCPSocketListener(std::filesystem::path url, DescriptorLoop& loop, MCPConnectionLimits limits = {});
    MCPSocketListener(const MCPSocketListener&) = delete;
    MCPSocketListener& operator=(const MCPSocketListener&) = delete;
    ~MCPSocketListener() { stop(); }

    /// Called on the loop's thread with each connection, not started yet. Without it, connections are closed.
    void onConnection(OnConnection action) { *m_onConnection = std::move(action); }

    /// Makes the folder and the socket. The socket of a copy that runs stays untouched, that of one that died is replaced.
    Result<void, MCPSocketError> start();
    /// Stops accepting and removes the socket, unless another copy has put its own there.
    void stop();

    [[nodiscard]] bool isListening() const { return m_thread.joinable(); }
    [[nodiscard]] const std::filesystem::path& url() const { return m_url; }

private:
    /// Which file a path led to, so that only our own is removed.
    struct FileIdentity {
        dev_t device = 0;
        ino_t number = 0;
        bool operator==(const FileIdentity&) const = default;
    };

    static std::optional<FileIdentity> identityOf(const std::filesystem::path& path);
    Result<OwnedDescriptor, MCPSocketError> makeSocket() const;
    /// Closes the socket and removes its file.
    void letGo();
    void run();
    /// Takes one connection; false when the system is short of something and it makes sense to wait a little.
    bool acceptOne();

    const std::filesystem::path m_url;
    DescriptorLoop& m_loop;
    const MCPConnectionLimits m_limits;
    const std::shared_ptr<OnConnection> m_onConnection = std::make_shared<OnConnection>();
    std::unique_ptr<WakeUp> m_wakeUp; ///< rung to end the thread
    std::optional<FileIdentity> m_ownFile;
    OwnedDescriptor m_socket;
    std::jthread m_thread;
};

} // namespace morvelin
