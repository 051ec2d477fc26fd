// Time as types: lengths, and positions on the clocks of the system, which never mix by accident.
#pragma once

#include <algorithm>
#include <compare>

namespace morvelin {

/// A length of time in seconds.
struct Seconds {
    double value = 0;

    constexpr Seconds() = default;
    constexpr explicit Seconds(double seconds) : value(seconds) {}

    constexpr auto operator<=>(const Seconds&) const = default;
    constexpr Seconds operator-() const { return Seconds(-value); }
    constexpr Seconds& operator+=(Seconds other) {
        value += other.value;
        return *this;
    }
    constexpr Seconds& operator-=(Seconds other) {
        value -= other.value;
        return *this;
    }
    friend constexpr Seconds operator+(Seconds a, Seconds b) { return Seconds(a.value + b.value); }
    friend constexpr Seconds operator-(Seconds a, Seconds b) { return Seconds(a.value - b.value); }
    friend constexpr Seconds operator*(Seconds a, double factor) { return Seconds(a.value * factor); }
    friend constexpr Seconds operator*(double factor, Seconds a) { return Seconds(a.value * factor); }
    friend constexpr Seconds operator/(Seconds a, double divisor) { return Seconds(a.value / divisor); }
    friend constexpr double operator/(Seconds a, Seconds b) { return a.value / b.value; }
};

inline namespace literals {
constexpr Seconds operator""_s(long double seconds) { return Seconds(static_cast<double>(seconds)); }
constexpr Seconds operator""_s(unsigned long long seconds) { return Seconds(static_cast<double>(seconds)); }
} // namespace literals

/// A moment on one clock, in seconds since that clock's zero. Moments of different clocks do not mix.
template <class Clock>
struct Moment {
    double value = 0;

    constexpr Moment() = default;
    constexpr explicit Moment(double seconds) : value(seconds) {}
    /// So that a literal can stand for a moment: `EditTime t = 1.5_s`.
    constexpr Moment(Seconds sinceZero) : value(sinceZero.value) {}

    constexpr Seconds sinceZero() const { return Seconds(value); }

    constexpr Moment& operator+=(Seconds length) {
        value += length.value;
        return *this;
    }
    friend constexpr auto operator<=>(Moment a, Moment b) { return a.value <=> b.value; }
    friend constexpr bool operator==(Moment a, Moment b) { return a.value == b.value; }
    friend constexpr Moment operator+(Moment a, Seconds b) { return Moment(a.value + b.value); }
    friend constexpr Moment operator-(Moment a, Seconds b) { return Moment(a.value - b.value); }
    friend constexpr Seconds operator-(Moment a, Moment b) { return Seconds(a.value - b.value); }
};

/// Seconds into `recording.mov`, paused spans already taken out.
using SourceTime = Moment<struct SourceClock>;
/// Seconds into the finished video, after cuts and speed changes.
using EditTime = Moment<struct EditClock>;
/// Seconds of the machine's monotonic clock, on which frames and input events are stamped.
using HostTime = Moment<struct HostClock>;

} // namespace morvelin
