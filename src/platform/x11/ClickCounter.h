// Counts the clicks of a multiple click, as desktops do: same button, soon after, close by.
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>

#include "core/base/Time.h"
#include "platform/Pointer.h"

namespace morvelin {

class ClickCounter {
public:
    static constexpr Seconds kLongestGap{0.5};
    static constexpr double kFarthest = 4; ///< pixels from the press before

    /// The count that a press has: 2 for the second of a double click.
    std::int64_t press(std::uint32_t button, HostTime time, DesktopPoint location) {
        const bool continues = m_last && m_last->button == button && time - m_last->time <= kLongestGap &&
                               std::hypot(location.x - m_last->location.x, location.y - m_last->location.y) <=
                                   kFarthest;
        m_last = Press{button, time, location, continues ? m_last->count + 1 : 1};
        return m_last->count;
    }

    /// The count of the press that this release ends.
    [[nodiscard]] std::int64_t release(std::uint32_t button) const {
        return m_last && m_last->button == button ? m_last->count : 1;
    }

private:
    struct Press {
        std::uint32_t button = 0;
        HostTime time;
        DesktopPoint location;
        std::int64_t count = 1;
    };

    std::optional<Press> m_last;
};

} // namespace morvelin
