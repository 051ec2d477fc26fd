// Lets another thread end a wait. Owned by the object whose thread waits.
#pragma once

#include <optional>

#include "core/base/Time.h"

namespace morvelin {

/// The monotonic clock, on which frames and input events are stamped.
[[nodiscard]] HostTime hostNow();

class WakeUp {
public:
    WakeUp();
    ~WakeUp();
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;

    /// From any thread: ends the wait that runs, or else the next one.
    void raise();

    enum class Outcome { Readable, Raised, TimedOut };
    /// Waits for `descriptor` (-1: none) to become readable, for `raise`, or until `limit` (none: without end).
    Outcome wait(int descriptor, std::optional<HostTime> limit);

private:
    int m_descriptor = -1;
};

} // namespace morvelin
