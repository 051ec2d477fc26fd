// A loop with a virtual clock: hours of pacing and time-outs pass in microseconds, the same way every time.
#pragma once

#include <map>

#include "core/base/EventLoop.h"

namespace morvelin {

/// Single-threaded: workers run inline, their ends are posted.
class SimulatedEventLoop final : public EventLoop {
public:
    void post(Action action) override;
    Timer after(Seconds delay, Action action) override;
    Timer every(Seconds interval, Action action) override;
    [[nodiscard]] HostTime now() const override { return m_now; }
    void offload(Action work, Action done) override;

    /// Runs all that is due within `length`, each at its own virtual time.
    void advance(Seconds length);

private:
    using Key = std::pair<HostTime, std::uint64_t>;

    void schedule(Key key, Action action);
    void scheduleEvery(const std::shared_ptr<Key>& key, Seconds interval, const std::shared_ptr<Action>& action);

    HostTime m_now;
    std::uint64_t m_nextNumber = 0; ///< keeps the order of what is due at the same time
    std::map<Key, Action> m_due;
};

} // namespace morvelin
