// Runs a real loop from a test until something has happened.
#pragma once

#include <functional>
#include <optional>
#include <utility>

#include "core/base/GLibEventLoop.h"

namespace morvelin {

/// Runs the loop until `isDone`, asked every millisecond, or the limit. True when it was done.
inline bool runUntil(GLibEventLoop& loop, const std::function<bool()>& isDone, Seconds limit = Seconds(20)) {
    bool done = false;
    bool hasEnded = false;
    // One `quit` for each `run`: a second one would end the next run.
    const auto end = [&] {
        if (!std::exchange(hasEnded, true)) loop.quit();
    };
    const auto asking = loop.every(Seconds(0.001), [&] {
        done = done || isDone();
        if (done) end();
    });
    const auto limiting = loop.after(limit, end);
    loop.run();
    return done;
}

inline void runFor(GLibEventLoop& loop, Seconds length) {
    runUntil(
        loop, [] { return false; }, length);
}

/// Runs the loop until the task has its value.
template <class T>
T runTask(GLibEventLoop& loop, Task<T> task) {
    std::optional<T> value;
    const auto keep = [](Task<T> running, std::optional<T>& result) -> Task<void> { result = co_await running; };
    loop.spawn(keep(std::move(task), value));
    if (!value) runUntil(loop, [&] { return value.has_value(); });
    return std::move(*value);
}

} // namespace morvelin
