// The pauses of a take, and the time line without them. A value of the capture thread.
#pragma once

#include <optional>

#include "core/base/Time.h"

namespace morvelin {

struct PauseTimeline {
    Seconds offset; ///< total length of the pauses that are over
    std::optional<HostTime> pauseStart;

    [[nodiscard]] bool isPaused() const { return pauseStart.has_value(); }

    void pause(HostTime now) {
        if (!pauseStart) pauseStart = now;
    }
    void resume(HostTime now) {
        if (pauseStart) offset += std::max(now - *pauseStart, Seconds(0));
        pauseStart.reset();
    }

    /// The moment with all pauses before it taken out; a moment inside a running pause is where that began.
    [[nodiscard]] HostTime adjusted(HostTime time) const {
        return (pauseStart ? std::min(time, *pauseStart) : time) - offset;
    }
};

} // namespace morvelin
