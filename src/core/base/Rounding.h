// How measured numbers stand in exported files and tool results.
#pragma once

#include <cmath>

#include "core/base/Time.h"

namespace morvelin {

/// Rounds to 3 decimals, halves away from zero.
[[nodiscard]] inline double roundedTo3Decimals(double value) { return std::round(value * 1000) / 1000; }
[[nodiscard]] inline double roundedTo3Decimals(Seconds length) { return roundedTo3Decimals(length.value); }
template <class Clock>
[[nodiscard]] double roundedTo3Decimals(Moment<Clock> moment) {
    return roundedTo3Decimals(moment.value);
}

} // namespace morvelin
