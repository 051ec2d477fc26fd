// Where the days of a calendar begin: the user's time zone, handed in so that a run can be replayed.
#pragma once

#include <chrono>
#include <string>

#include "core/base/Date.h"

namespace morvelin {

class TimeZone {
public:
    virtual ~TimeZone() = default;
    /// Local time minus UTC at that moment.
    [[nodiscard]] virtual std::chrono::seconds offsetAt(Date date) const = 0;

    /// The local day that the moment lies in.
    [[nodiscard]] std::chrono::local_days dayOf(Date date) const;
    /// The first moment of a day, also where a change of the clocks leaves out midnight.
    [[nodiscard]] Date startOf(std::chrono::local_days day) const;
    [[nodiscard]] Date startOfDay(Date date) const { return startOf(dayOf(date)); }
};

/// "Nov 21, 2026"
[[nodiscard]] std::string dayText(std::chrono::local_days day);

/// The machine's time zone.
class SystemTimeZone final : public TimeZone {
public:
    [[nodiscard]] std::chrono::seconds offsetAt(Date date) const override;
};

/// One offset all year.
class FixedTimeZone final : public TimeZone {
public:
    explicit FixedTimeZone(std::chrono::seconds offset) : m_offset(offset) {}
    [[nodiscard]] std::chrono::seconds offsetAt(Date) const override { return m_offset; }

private:
    std::chrono::seconds m_offset;
};

} // namespace morvelin
