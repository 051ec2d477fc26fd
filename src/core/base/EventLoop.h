// The main thread's loop: who runs what and when. Real (GLib) in the program, simulated in tests.
#pragma once

#include <coroutine>
#include <functional>
#include <memory>
#include <optional>

#include "core/base/Task.h"
#include "core/base/Time.h"

namespace morvelin {

/// Work that a loop runs on its thread, in order.
class EventLoop {
public:
    using Action = std::function<void()>;

    /// Ends a pending timer when it goes; a default-made one ends nothing.
    class [[nodiscard]] Timer {
    public:
        Timer() = default;
        explicit Timer(Action cancel) : m_cancel(std::move(cancel)) {}
        Timer(Timer&& other) noexcept : m_cancel(std::exchange(other.m_cancel, nullptr)) {}
        Timer& operator=(Timer&& other) noexcept {
            std::swap(m_cancel, other.m_cancel);
            return *this;
        }
        ~Timer() {
            if (m_cancel) m_cancel();
        }

    private:
        Action m_cancel;
    };

    virtual ~EventLoop() = default;

    /// Runs the action on the loop's thread, after what was posted before. From any thread.
    virtual void post(Action action) = 0;
    /// Runs the action once, `delay` from now. On the loop's thread.
    virtual Timer after(Seconds delay, Action action) = 0;
    /// Runs the action every `interval`; late ticks are not made up for. On the loop's thread.
    virtual Timer every(Seconds interval, Action action) = 0;
    /// The loop's monotonic clock.
    [[nodiscard]] virtual HostTime now() const = 0;
    /// Runs `work` off the loop's thread, then `done` on it. The loop must outlive the work.
    virtual void offload(Action work, Action done) = 0;

    /// Starts a task and lets it run to its end.
    void spawn(Task<void> task);

    /// `co_await loop.sleep(0.06_s)`: goes on after that time.
    [[nodiscard]] auto sleep(Seconds delay) {
        struct Awaiter {
            EventLoop& loop;
            Seconds delay;
            Timer timer;

            bool await_ready() const noexcept { return false; }
            void await_suspend(std::coroutine_handle<> waiting) {
                timer = loop.after(delay, [waiting] { waiting.resume(); });
            }
            void await_resume() const noexcept {}
        };
        return Awaiter{*this, delay, {}};
    }
};

/// `co_await onWorker(loop, [&] { return slowly(); })`: runs the function off the main thread, goes on upon it. What a
/// lambda captures by value, GCC 12 destroys twice; the coroutine's own variables live long enough to be referred to.
template <class Function>
[[nodiscard]] auto onWorker(EventLoop& loop, Function function) {
    using Value = std::invoke_result_t<Function&>;
    static_assert(!std::is_void_v<Value>, "a worker's function gives a value");
    struct Awaiter {
        EventLoop& loop;
        Function function;
        std::optional<Value> value;

        bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> waiting) {
            loop.offload([this] { value.emplace(function()); }, [waiting] { waiting.resume(); });
        }
        Value await_resume() { return std::move(*value); }
    };
    return Awaiter{loop, std::move(function), std::nullopt};
}

} // namespace morvelin
