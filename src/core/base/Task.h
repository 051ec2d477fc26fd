// A coroutine that gives a value later: the form of every long operation of the main thread.
#pragma once

#include <coroutine>
#include <exception>
#include <optional>
#include <utility>

namespace morvelin {

namespace task {

/// Hands control straight to whoever waits for the finished coroutine.
struct ResumeAwaiter {
    bool await_ready() const noexcept { return false; }
    template <class Promise>
    std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> finished) const noexcept {
        const std::coroutine_handle<> waiting = finished.promise().waiting;
        return waiting ? waiting : std::noop_coroutine();
    }
    void await_resume() const noexcept {}
};

struct PromiseBase {
    std::coroutine_handle<> waiting;

    std::suspend_always initial_suspend() const noexcept { return {}; }
    ResumeAwaiter final_suspend() const noexcept { return {}; }
    /// Our operations report errors by value; an exception here is a mistake of ours.
    [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
};

} // namespace task

/// A lazily started coroutine: nothing runs before it is awaited or spawned on an `EventLoop`.
/// Destroying a task that hasn't finished destroys its frame and all it holds.
template <class T>
class [[nodiscard]] Task {
public:
    struct promise_type : task::PromiseBase {
        std::optional<T> value;

        Task get_return_object() { return Task(std::coroutine_handle<promise_type>::from_promise(*this)); }
        template <class U>
        void return_value(U&& result) {
            value.emplace(std::forward<U>(result));
        }
    };

    Task(Task&& other) noexcept : m_frame(std::exchange(other.m_frame, {})) {}
    Task& operator=(Task&& other) noexcept {
        std::swap(m_frame, other.m_frame);
        return *this;
    }
    ~Task() {
        if (m_frame) m_frame.destroy();
    }

    bool await_ready() const noexcept { return false; }
    std::coroutine_handle<> await_suspend(std::coroutine_handle<> waiting) noexcept {
        m_frame.promise().waiting = waiting;
        return m_frame;
    }
    T await_resume() { return std::move(*m_frame.promise().value); }

private:
    explicit Task(std::coroutine_handle<promise_type> frame) : m_frame(frame) {}
    std::coroutine_handle<promise_type> m_frame;
};

template <>
class [[nodiscard]] Task<void> {
public:
    struct promise_type : task::PromiseBase {
        Task get_return_object() { return Task(std::coroutine_handle<promise_type>::from_promise(*this)); }
        void return_void() const noexcept {}
    };

    Task(Task&& other) noexcept : m_frame(std::exchange(other.m_frame, {})) {}
    Task& operator=(Task&& other) noexcept {
        std::swap(m_frame, other.m_frame);
        return *this;
    }
    ~Task() {
        if (m_frame) m_frame.destroy();
    }

    bool await_ready() const noexcept { return false; }
    std::coroutine_handle<> await_suspend(std::coroutine_handle<> waiting) noexcept {
        m_frame.promise().waiting = waiting;
        return m_frame;
    }
    void await_resume() const noexcept {}

private:
    explicit Task(std::coroutine_handle<promise_type> frame) : m_frame(frame) {}
    std::coroutine_handle<promise_type> m_frame;
};

} // namespace morvelin
