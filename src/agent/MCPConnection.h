// One agent's connection: cuts what comes in into lines, and writes replies.
//
// It lives on the loop's thread, where the lines are needed: handing them over from a thread that reads would cost more
// than reading does. Nothing here blocks; replies that the agent does not read at once are left to `ReplyWriter`'s thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "agent/LineCutter.h"
#include "agent/ReplyWriter.h"
#include "core/base/DescriptorLoop.h"
#include "core/base/OwnedDescriptor.h"

namespace morvelin {

/// What a connection allows its peer; other than the defaults in tests only.
struct MCPConnectionLimits {
    std::size_t lineBytes = 0x100000;
    std::chrono::milliseconds sending{2000}; ///< for one reply to leave
    Seconds draining{2};                     ///< for replies still to come after the peer's last line
};

/// Whoever sets the callbacks owns it. All operations on the loop's thread, but for making one.
class MCPConnection : public std::enable_shared_from_this<MCPConnection> {
public:
    /// Takes an accepted stream socket. The loop must outlive the connection.
    MCPConnection(OwnedDescriptor socket, DescriptorLoop& loop, MCPConnectionLimits limits = {});
    MCPConnection(const MCPConnection&) = delete;
    MCPConnection& operator=(const MCPConnection&) = delete;
    ~MCPConnection() = default;

    /// Called with each line, in order. Set before `start`.
    void onLine(std::function<void(std::string line)> action) { m_onLine = std::move(action); }
    /// Called by way of the loop once the connection has ended. Set before `start`.
    void onClosed(std::function<void()> action) { m_onClosed = std::move(action); }
    void start();

    /// Writes the bytes, after all that was sent before; dropped when the connection has ended. A peer that does not take
    /// them in time is cut off.
    void send(std::string bytes);
    /// Ends the connection at once, with all that waits.
    void close();

    /// Whether the peer was this very program, run by the same user, when it was accepted.
    [[nodiscard]] bool isOwnProgram() const { return m_isOwnProgram; }

private:
    enum class Phase { Reading, Draining, Closed };

    void read();
    void readOnce();
    void drain();
    [[nodiscard]] ReplyWriter::Callbacks writerCallbacks();

    DescriptorLoop& m_loop;
    const MCPConnectionLimits m_limits;
    const bool m_isOwnProgram;
    std::function<void(std::string)> m_onLine;
    std::function<void()> m_onClosed;
    Phase m_phase = Phase::Reading;
    LineCutter m_lines;
    OwnedDescriptor m_socket;
    std::unique_ptr<ReplyWriter> m_writer; ///< from `start` to the end
    EventLoop::Timer m_reading;
    EventLoop::Timer m_draining;
};

} // namespace morvelin
