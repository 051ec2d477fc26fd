// Calendar dates as files hold them, and the clocks that tell what time it is.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "core/base/Time.h"

namespace morvelin {

/// A moment of the calendar in UTC. Files hold it as ISO 8601 text in whole seconds.
struct Date {
    std::chrono::sys_time<std::chrono::milliseconds> moment{};

    auto operator<=>(const Date&) const = default;

    [[nodiscard]] static Date fromUnixSeconds(long long seconds);
    [[nodiscard]] long long unixSeconds() const;

    /// "2026-11-21T04:10:33Z": whole seconds, rounded down.
    [[nodiscard]] std::string text() const;
    /// Reads ISO 8601 with `T`, with or without fractions of a second, with `Z` or an offset such as +01:00.
    [[nodiscard]] static std::optional<Date> parse(std::string_view text);

    /// "Nov 21, 2026 at 4:10 AM" in the machine's time zone: how a recording is named.
    [[nodiscard]] std::string localDateAndTime() const;
};

/// What time it is; passed in, so that a run can be replayed.
class WallClock {
public:
    virtual ~WallClock() = default;
    [[nodiscard]] virtual Date now() const = 0;
    [[nodiscard]] virtual HostTime uptime() const = 0;
};

/// The machine's own clocks: the calendar, and CLOCK_MONOTONIC.
class SystemClock final : public WallClock {
public:
    [[nodiscard]] Date now() const override;
    [[nodiscard]] HostTime uptime() const override;
};

} // namespace morvelin
