// Counts frames that the screen had and a take lacks, because the machine was busy with the one before. A value of the
// capture thread.
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>

#include "core/base/Time.h"

namespace morvelin {

class LostFrames {
public:
    /// A frame of `time` was dealt with at `done`; frames come no more often than `interval`.
    void recorded(HostTime time, HostTime done, Seconds interval) {
        // A frame that was there at once has waited, and others may have come and gone before it. After a rest none did.
        if (m_last && time - m_last->done < kAtOnce)
            m_count += std::max<std::int64_t>(std::llround(std::floor((time - m_last->time) / interval)) - 1, 0);
        m_last = {time, done};
    }

    [[nodiscard]] std::int64_t count() const { return m_count; }

private:
    static constexpr Seconds kAtOnce{0.002};

    struct Frame {
        HostTime time;
        HostTime done;
    };
    std::optional<Frame> m_last;
    std::int64_t m_count = 0;
};

} // namespace morvelin
