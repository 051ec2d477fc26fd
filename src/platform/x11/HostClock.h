// The clock that frames and input events are stamped with, and waiting by it.
#pragma once

#include <optional>

#include "core/base/Time.h"
#include "core/base/WakeUp.h"

namespace morvelin {

/// The monotonic clock.
[[nodiscard]] HostTime hostNow();

enum class WaitOutcome { Readable, Woken, TimedOut };
/// Waits for `descriptor` (-1: none) to become readable, for a ring, which is then cleared, or until `limit` (none:
/// without end).
WaitOutcome waitFor(int descriptor, const WakeUp& wakeUp, std::optional<HostTime> limit);

} // namespace morvelin
