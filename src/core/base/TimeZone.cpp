#include "core/base/TimeZone.h"

#include <algorithm>
#include <ctime>

#include <fmt/format.h>

namespace morvelin {

namespace chrono = std::chrono;

chrono::local_days TimeZone::dayOf(Date date) const {
    const auto local = date.moment + offsetAt(date);
    return chrono::local_days(chrono::floor<chrono::days>(local).time_since_epoch());
}

Date TimeZone::startOf(chrono::local_days day) const {
    const chrono::sys_seconds midnight(chrono::seconds(day.time_since_epoch()));
    // With the offset of the evening before it is the moment at which midnight comes. Where the clocks go back over it,
    // that is the first one of the two; where they go forward over it, the day begins at the same moment.
    const Date evening{midnight - offsetAt(Date{midnight}) - chrono::hours(2)};
    const Date byEvening{midnight - offsetAt(evening)};
    return dayOf(byEvening) == day ? byEvening : Date{midnight - offsetAt(byEvening)};
}

std::string dayText(chrono::local_days day) {
    static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const chrono::year_month_day date(day);
    return fmt::format("{} {}, {}", kMonths[unsigned(date.month()) - 1], unsigned(date.day()), int(date.year()));
}

chrono::seconds SystemTimeZone::offsetAt(Date date) const {
    const std::time_t seconds = static_cast<std::time_t>(date.unixSeconds());
    std::tm local{};
    localtime_r(&seconds, &local);
    return chrono::seconds(local.tm_gmtoff);
}

} // namespace morvelin
