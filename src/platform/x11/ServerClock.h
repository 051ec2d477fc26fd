// Turns an X server's time stamps into the machine's own time.
#pragma once

#include <cstdint>
#include <optional>

#include "core/base/Time.h"

namespace morvelin {

/// Server times are milliseconds in 32 bits that wrap after 49 days. Each event tells that its stamp lies before the
/// moment of its arrival; the shortest delay seen so far gives the best guess of how far the two clocks are apart.
class ServerClock {
public:
    /// When an event with this stamp happened, which arrived at `arrival`.
    HostTime hostTime(std::uint32_t stamp, HostTime arrival) {
        if (!m_base) m_base = stamp;
        const auto sinceBase = static_cast<std::int32_t>(stamp - *m_base);
        const Seconds offset = arrival - HostTime(static_cast<double>(sinceBase) / 1000);
        m_offset = m_offset ? std::min(*m_offset, offset) : offset;
        return HostTime(static_cast<double>(sinceBase) / 1000) + *m_offset;
    }

private:
    std::optional<std::uint32_t> m_base;
    std::optional<Seconds> m_offset;
};

} // namespace morvelin
