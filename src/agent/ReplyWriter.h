// Writes one agent's replies in order, without ever making the main thread wait for the agent to read them.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "core/base/WakeUp.h"

namespace morvelin {

/// Owned by a connection. A reply that the socket takes at once leaves from the caller's thread; what it does not take is
/// written by a thread of the writer's own, which is started when it is needed first.
class ReplyWriter {
public:
    struct Callbacks {
        std::function<void()> onFailed; ///< once: the peer has gone, or did not take a reply in time
        std::function<void()> onRelief; ///< room again, after `isFull` said that there was none
    };

    /// `socket` must outlive the writer; `patience` is the time that one reply may take. The callbacks come from either
    /// thread and must not call the writer.
    ReplyWriter(int socket, std::chrono::milliseconds patience, Callbacks callbacks)
        : m_socket(socket),
          m_patience(patience),
          m_callbacks(std::move(callbacks)) {}
    ReplyWriter(const ReplyWriter&) = delete;
    ReplyWriter& operator=(const ReplyWriter&) = delete;
    /// Drops what waits.
    ~ReplyWriter();

    /// After a failure, bytes are dropped.
    void send(std::string bytes);
    /// Whether so much waits that the peer should be asked nothing more of. `onRelief` follows a yes.
    [[nodiscard]] bool isFull();

private:
    using Clock = std::chrono::steady_clock;
    enum class State { Open, Failed, Ended };

    struct Reply {
        std::string bytes;
        std::size_t written = 0;
    };

    void run();
    bool wait();
    // With the lock held:
    void write();
    void fail();
    void handOver();

    const int m_socket;
    const std::chrono::milliseconds m_patience;
    const Callbacks m_callbacks;

    /// Guards what stands below, which both threads write from.
    std::mutex m_mutex;
    State m_state = State::Open;
    std::deque<Reply> m_replies;
    std::size_t m_waitingBytes = 0;
    bool m_owesRelief = false;
    std::optional<Clock::time_point> m_deadline; ///< of the first reply, once the socket has not taken it whole
    std::optional<WakeUp> m_wakeUp;              ///< made with the thread

    std::jthread m_thread; ///< last, so that it has ended before anything above goes
};

} // namespace morvelin
