#include "agent/ReplyWriter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>

#include <fmt/format.h>

namespace morvelin {

namespace {

constexpr std::size_t kFullBytes = 4 << 20;

} // namespace

ReplyWriter::~ReplyWriter() {
    const std::lock_guard lock(m_mutex);
    m_state = State::Ended;
    if (m_wakeUp) m_wakeUp->ring();
}

void ReplyWriter::send(std::string bytes) {
    const std::lock_guard lock(m_mutex);
    if (m_state != State::Open || bytes.empty()) return;
    m_waitingBytes += bytes.size();
    m_replies.push_back({std::move(bytes)});
    if (m_replies.size() > 1) return; // the thread writes the first, and this one in its turn
    write();
    if (!m_replies.empty()) handOver();
}

bool ReplyWriter::isFull() {
    const std::lock_guard lock(m_mutex);
    m_owesRelief = m_state == State::Open && m_waitingBytes >= kFullBytes;
    return m_owesRelief;
}

/// Writes what the socket takes without waiting.
void ReplyWriter::write() {
    while (m_state == State::Open && !m_replies.empty()) {
        Reply& first = m_replies.front();
        const ssize_t count = ::send(m_socket, first.bytes.data() + first.written, first.bytes.size() - first.written,
                                     MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EAGAIN) {
            if (!m_deadline) m_deadline = Clock::now() + m_patience;
            break;
        }
        if (count < 0) return fail();
        first.written += static_cast<std::size_t>(count);
        if (first.written < first.bytes.size()) continue;
        m_waitingBytes -= first.bytes.size();
        m_replies.pop_front();
        m_deadline.reset();
    }
    if (m_owesRelief && m_waitingBytes < kFullBytes) {
        m_owesRelief = false;
        m_callbacks.onRelief();
    }
}

void ReplyWriter::fail() {
    m_state = State::Failed;
    m_replies.clear();
    m_callbacks.onFailed();
}

/// Leaves the rest to the thread.
void ReplyWriter::handOver() {
    if (m_wakeUp) return m_wakeUp->ring();
    try {
        m_wakeUp.emplace();
        if (!m_wakeUp->descriptor().isOpen()) return fail();
        m_thread = std::jthread([this] { run(); });
    } catch (const std::system_error&) { fail(); }
}

void ReplyWriter::run() {
    (void)::pthread_setname_np(::pthread_self(), fmt::format("mcp.conn.{}", m_socket).substr(0, 15).c_str());
    while (wait()) {
        const std::lock_guard lock(m_mutex);
        if (m_state == State::Open && m_deadline && Clock::now() >= *m_deadline) fail();
        write();
    }
}

/// Until the socket takes more, a reply has run out of time, or there is news. False when the thread is to end.
bool ReplyWriter::wait() {
    int socket = -1;
    int timeout = -1;
    {
        const std::lock_guard lock(m_mutex);
        if (m_state != State::Open) return false;
        if (m_deadline) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(*m_deadline - Clock::now());
            socket = m_socket;
            timeout = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
        }
    }
    std::array<pollfd, 2> waiting{pollfd{m_wakeUp->descriptor().get(), POLLIN, 0}, pollfd{socket, POLLOUT, 0}};
    (void)::poll(waiting.data(), waiting.size(), timeout);
    if (waiting[0].revents != 0) m_wakeUp->clear();
    return true;
}

} // namespace morvelin
