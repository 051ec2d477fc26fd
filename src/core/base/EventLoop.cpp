#include "core/base/EventLoop.h"

namespace morvelin {

namespace {

/// A coroutine frame that owns itself: it starts at once and is gone when it ends.
struct Detached {
    struct promise_type {
        Detached get_return_object() const noexcept { return {}; }
        std::suspend_never initial_suspend() const noexcept { return {}; }
        std::suspend_never final_suspend() const noexcept { return {}; }
        void return_void() const noexcept {}
        [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
    };
};

Detached runToTheEnd(Task<void> task) { co_await task; }

} // namespace

void EventLoop::spawn(Task<void> task) { runToTheEnd(std::move(task)); }

} // namespace morvelin
