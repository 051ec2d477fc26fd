// How the timeline's rules compare: a value that is exact in decimals passes its threshold, whatever its binary form.
#pragma once

#include "core/base/Time.h"

namespace morvelin {

/// Slack of every threshold: seconds for times, fractions of the capture for distances.
inline constexpr double kTolerance = 1e-9;

constexpr bool atLeast(double value, double limit) { return value >= limit - kTolerance; }
constexpr bool atMost(double value, double limit) { return value <= limit + kTolerance; }

constexpr bool atLeast(Seconds value, Seconds limit) { return atLeast(value.value, limit.value); }
constexpr bool atMost(Seconds value, Seconds limit) { return atMost(value.value, limit.value); }

template <class Clock>
constexpr bool atLeast(Moment<Clock> value, Moment<Clock> limit) {
    return atLeast(value.value, limit.value);
}
template <class Clock>
constexpr bool atMost(Moment<Clock> value, Moment<Clock> limit) {
    return atMost(value.value, limit.value);
}

} // namespace morvelin
