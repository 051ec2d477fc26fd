// One answer that several coroutines wait for.
#pragma once

#include <coroutine>
#include <optional>
#include <utility>
#include <vector>

namespace morvelin {

/// Confined to the main thread; held by everyone concerned through a `shared_ptr`, since giving the answer runs those who
/// wait for it. It must be given in the end: a coroutine that waits is owned by nobody else.
template <class T>
class SharedAnswer {
public:
    SharedAnswer() = default;
    SharedAnswer(const SharedAnswer&) = delete;
    SharedAnswer& operator=(const SharedAnswer&) = delete;

    /// Lets all who wait go on, in the order in which they came. Only the first answer counts.
    void give(T value) {
        if (m_value) return;
        m_value = std::move(value);
        for (const std::coroutine_handle<> each : std::exchange(m_waiting, {})) each.resume();
    }

    /// `co_await answer->wait()`: the answer, now or once it is given.
    [[nodiscard]] auto wait() {
        struct Awaiter {
            SharedAnswer& answer;

            bool await_ready() const noexcept { return answer.m_value.has_value(); }
            void await_suspend(std::coroutine_handle<> waiting) { answer.m_waiting.push_back(waiting); }
            T await_resume() const { return *answer.m_value; }
        };
        return Awaiter{*this};
    }

private:
    std::optional<T> m_value;
    std::vector<std::coroutine_handle<>> m_waiting;
};

} // namespace morvelin
