#include "core/base/Date.h"

#include <array>
#include <charconv>
#include <ctime>

#include <fmt/compile.h>

namespace morvelin {

namespace {

namespace chrono = std::chrono;

/// Takes text from the front, field by field; any misfit makes the whole reading fail.
class Scanner {
public:
    explicit Scanner(std::string_view text) : m_rest(text) {}

    std::optional<int> digits(std::size_t count) {
        if (m_rest.size() < count) return std::nullopt;
        int value = 0;
        for (const char c : m_rest.substr(0, count)) {
            if (c < '0' || c > '9') return std::nullopt;
            value = value * 10 + (c - '0');
        }
        m_rest.remove_prefix(count);
        return value;
    }

    bool take(char c) {
        if (m_rest.empty() || m_rest.front() != c) return false;
        m_rest.remove_prefix(1);
        return true;
    }

    bool atEnd() const { return m_rest.empty(); }

private:
    std::string_view m_rest;
};

std::optional<chrono::sys_days> scanDay(Scanner& scanner) {
    const auto year = scanner.digits(4);
    if (!year || !scanner.take('-')) return std::nullopt;
    const auto month = scanner.digits(2);
    if (!month || !scanner.take('-')) return std::nullopt;
    const auto day = scanner.digits(2);
    if (!day) return std::nullopt;
    const chrono::year_month_day date{chrono::year(*year), chrono::month(static_cast<unsigned>(*month)),
                                      chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok()) return std::nullopt;
    return chrono::sys_days(date);
}

std::optional<chrono::milliseconds> scanTimeOfDay(Scanner& scanner) {
    const auto hour = scanner.digits(2);
    if (!hour || *hour > 23 || !scanner.take(':')) return std::nullopt;
    const auto minute = scanner.digits(2);
    if (!minute || *minute > 59 || !scanner.take(':')) return std::nullopt;
    const auto second = scanner.digits(2);
    if (!second || *second > 60) return std::nullopt;

    int milliseconds = 0;
    if (scanner.take('.')) {
        int scale = 100;
        auto digit = scanner.digits(1);
        if (!digit) return std::nullopt;
        for (; digit; digit = scanner.digits(1), scale /= 10) milliseconds += *digit * scale;
    }
    return chrono::hours(*hour) + chrono::minutes(*minute) + chrono::seconds(*second) +
           chrono::milliseconds(milliseconds);
}

std::optional<chrono::minutes> scanOffset(Scanner& scanner) {
    if (scanner.take('Z') || scanner.take('z')) return chrono::minutes(0);
    const int sign = scanner.take('+') ? 1 : scanner.take('-') ? -1 : 0;
    if (sign == 0) return std::nullopt;
    const auto hours = scanner.digits(2);
    if (!hours || *hours > 23) return std::nullopt;
    (void)scanner.take(':');
    const auto minutes = scanner.digits(2);
    if (!minutes || *minutes > 59) return std::nullopt;
    return chrono::minutes(sign * (*hours * 60 + *minutes));
}

} // namespace

Date Date::fromUnixSeconds(long long seconds) {
    return Date{chrono::sys_time<chrono::milliseconds>(chrono::seconds(seconds))};
}

long long Date::unixSeconds() const { return chrono::floor<chrono::seconds>(moment).time_since_epoch().count(); }

std::string Date::text() const {
    const auto seconds = chrono::floor<chrono::seconds>(moment);
    const auto day = chrono::floor<chrono::days>(seconds);
    const chrono::year_month_day date(day);
    const chrono::hh_mm_ss time(seconds - day);
    std::array<char, 32> text; // a year has five digits and a sign at most
    const char* const end = fmt::format_to(text.data(), FMT_COMPILE("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z"),
                                           int(date.year()), unsigned(date.month()), unsigned(date.day()),
                                           time.hours().count(), time.minutes().count(), time.seconds().count());
    return {static_cast<const char*>(text.data()), end};
}

std::optional<Date> Date::parse(std::string_view text) {
    Scanner scanner(text);
    const auto day = scanDay(scanner);
    if (!day || !scanner.take('T')) return std::nullopt;
    const auto time = scanTimeOfDay(scanner);
    if (!time) return std::nullopt;
    const auto offset = scanOffset(scanner);
    if (!offset || !scanner.atEnd()) return std::nullopt;
    return Date{chrono::sys_time<chrono::milliseconds>(day->time_since_epoch()) + *time - *offset};
}

std::string Date::localDateAndTime() const {
    const std::time_t seconds = static_cast<std::time_t>(unixSeconds());
    std::tm local{};
    localtime_r(&seconds, &local);
    static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const int hour = local.tm_hour % 12 == 0 ? 12 : local.tm_hour % 12;
    return fmt::format("{} {}, {} at {}:{:02} {}", kMonths[local.tm_mon], local.tm_mday, local.tm_year + 1900, hour,
                       local.tm_min, local.tm_hour < 12 ? "AM" : "PM");
}

Date SystemClock::now() const { return Date{chrono::floor<chrono::milliseconds>(chrono::system_clock::now())}; }

HostTime SystemClock::uptime() const {
    // steady_clock is CLOCK_MONOTONIC here, the clock that X11 servers stamp their events with.
    return HostTime(chrono::duration<double>(chrono::steady_clock::now().time_since_epoch()).count());
}

} // namespace morvelin
