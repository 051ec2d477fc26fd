#include "core/base/SimulatedEventLoop.h"

namespace morvelin {

void SimulatedEventLoop::schedule(Key key, Action action) { m_due.emplace(key, std::move(action)); }

void SimulatedEventLoop::post(Action action) { schedule({m_now, m_nextNumber++}, std::move(action)); }

EventLoop::Timer SimulatedEventLoop::after(Seconds delay, Action action) {
    const Key key{m_now + std::max(delay, 0_s), m_nextNumber++};
    schedule(key, std::move(action));
    return Timer([this, key] { m_due.erase(key); });
}

EventLoop::Timer SimulatedEventLoop::every(Seconds interval, Action action) {
    const auto key = std::make_shared<Key>(m_now + interval, m_nextNumber++);
    scheduleEvery(key, interval, std::make_shared<Action>(std::move(action)));
    return Timer([this, key] { m_due.erase(std::exchange(*key, Key{HostTime(-1), 0})); });
}

void SimulatedEventLoop::scheduleEvery(const std::shared_ptr<Key>& key, Seconds interval,
                                       const std::shared_ptr<Action>& action) {
    const Key due = *key;
    schedule(due, [this, key, interval, action] {
        *key = {m_now + interval, m_nextNumber++};
        scheduleEvery(key, interval, action);
        (*action)();
    });
}

void SimulatedEventLoop::offload(Action work, Action done) {
    work();
    post(std::move(done));
}

void SimulatedEventLoop::advance(Seconds length) {
    const HostTime end = m_now + length;
    while (!m_due.empty() && m_due.begin()->first.first <= end) {
        auto next = m_due.extract(m_due.begin());
        m_now = std::max(m_now, next.key().first);
        next.mapped()();
    }
    m_now = end;
}

} // namespace morvelin
