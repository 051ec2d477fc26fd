// A queue between two threads of a pipeline: it holds a few things and makes whoever is faster wait.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <stop_token>

namespace morvelin {

/// One producer, one consumer. Both waits end when their stop token asks for it.
template <class Item>
class BoundedQueue {
public:
    explicit BoundedQueue(std::size_t capacity) : m_capacity(capacity) {}

    /// Waits for room. False, with the item dropped, once `stop` is requested.
    bool push(Item item, const std::stop_token& stop) {
        std::unique_lock guard(m_lock);
        if (!m_room.wait(guard, stop, [&] { return m_items.size() < m_capacity; })) return false;
        m_items.push_back(std::move(item));
        m_filled.notify_one();
        return true;
    }

    /// Says that nothing more comes.
    void close() {
        const std::scoped_lock guard(m_lock);
        m_isClosed = true;
        m_filled.notify_one();
    }

    /// Waits for the next item. Nothing once the queue is closed and empty, or `stop` is requested.
    std::optional<Item> pop(const std::stop_token& stop) {
        std::unique_lock guard(m_lock);
        m_filled.wait(guard, stop, [&] { return !m_items.empty() || m_isClosed; });
        if (m_items.empty() || stop.stop_requested()) return std::nullopt;
        std::optional<Item> item = std::move(m_items.front());
        m_items.pop_front();
        m_room.notify_one();
        return item;
    }

private:
    const std::size_t m_capacity;
    std::mutex m_lock; ///< guards the two below
    std::deque<Item> m_items;
    bool m_isClosed = false;
    std::condition_variable_any m_room;
    std::condition_variable_any m_filled;
};

} // namespace morvelin
