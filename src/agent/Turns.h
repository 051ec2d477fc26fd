// Lets one coroutine at a time go on, in the order in which they came: gestures of several clients never mix.
#pragma once

#include <coroutine>
#include <deque>
#include <utility>

#include "core/base/EventLoop.h"

namespace morvelin {

/// Confined to the loop's thread; must outlive its turns.
class Turns {
public:
    /// Ends when it goes; the next coroutine goes on by way of the loop.
    class [[nodiscard]] Turn {
    public:
        explicit Turn(Turns& turns) : m_turns(&turns) {}
        Turn(Turn&& other) noexcept : m_turns(std::exchange(other.m_turns, nullptr)) {}
        Turn& operator=(Turn&&) = delete;
        ~Turn() {
            if (m_turns != nullptr) m_turns->pass();
        }

    private:
        Turns* m_turns;
    };

    explicit Turns(EventLoop& loop) : m_loop(loop) {}
    Turns(const Turns&) = delete;
    Turns& operator=(const Turns&) = delete;

    /// `const Turns::Turn turn = co_await turns.next();`
    [[nodiscard]] auto next() {
        struct Awaiter {
            Turns& turns;

            bool await_ready() const noexcept { return !std::exchange(turns.m_isTaken, true); }
            void await_suspend(std::coroutine_handle<> waiting) { turns.m_waiting.push_back(waiting); }
            Turn await_resume() const { return Turn(turns); }
        };
        return Awaiter{*this};
    }

private:
    void pass() {
        m_isTaken = !m_waiting.empty();
        if (!m_isTaken) return;
        m_loop.post([next = m_waiting.front()] { next.resume(); });
        m_waiting.pop_front();
    }

    EventLoop& m_loop;
    bool m_isTaken = false;
    std::deque<std::coroutine_handle<>> m_waiting;
};

} // namespace morvelin
