#include "agent/MCPConnection.h"

#include <array>
#include <cerrno>

#include <sys/socket.h>

#include "agent/PeerProcess.h"

namespace morvelin {

namespace {

constexpr std::size_t kReadBytes = 16'384;

} // namespace

MCPConnection::MCPConnection(OwnedDescriptor socket, DescriptorLoop& loop, MCPConnectionLimits limits)
    : m_loop(loop),
      m_limits(limits),
      m_isOwnProgram(peerRunsThisProgram(socket.get())),
      m_lines(limits.lineBytes),
      m_socket(std::move(socket)) {}

void MCPConnection::start() {
    m_writer = std::make_unique<ReplyWriter>(m_socket.get(), m_limits.sending, writerCallbacks());
    read();
}

/// The writer tells its news from any thread, and with its lock held: they come back by way of the loop.
ReplyWriter::Callbacks MCPConnection::writerCallbacks() {
    const auto later = [this](void (MCPConnection::*operation)()) {
        return [loop = &m_loop, weak = weak_from_this(), operation] {
            loop->post([weak, operation] {
                if (const auto self = weak.lock()) (self.get()->*operation)();
            });
        };
    };
    return {later(&MCPConnection::close), later(&MCPConnection::read)};
}

void MCPConnection::read() {
    if (m_phase == Phase::Reading) m_reading = m_loop.onReadable(m_socket.get(), [this] { readOnce(); });
}

void MCPConnection::readOnce() {
    const auto self = shared_from_this(); // what a line leads to may end the connection
    std::array<char, kReadBytes> bytes;
    const ssize_t count = ::recv(m_socket.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
    if (count <= 0) return drain();

    m_lines.append({bytes.data(), static_cast<std::size_t>(count)});
    while (auto line = m_lines.next()) {
        if (m_onLine) m_onLine(std::move(*line));
        if (m_phase != Phase::Reading) return;
    }
    if (m_lines.isOverLimit()) return close();
    // A peer that asks for more than it reads is left waiting instead of filling our memory.
    if (m_writer->isFull()) m_reading = {};
}

/// The peer has sent its last line; what it asked for may still be under way.
void MCPConnection::drain() {
    m_phase = Phase::Draining;
    m_reading = {};
    m_draining = m_loop.after(m_limits.draining, [this] { close(); });
}

void MCPConnection::send(std::string bytes) {
    if (m_writer) m_writer->send(std::move(bytes));
}

void MCPConnection::close() {
    if (m_phase == Phase::Closed) return;
    m_phase = Phase::Closed;
    m_reading = {};
    m_draining = {};
    m_writer.reset();
    m_socket.close();
    m_loop.post([weak = weak_from_this()] {
        if (const auto self = weak.lock(); self && self->m_onClosed) self->m_onClosed();
    });
}

} // namespace morvelin
