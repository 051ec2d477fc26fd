// The ease of camera moves, fades and art: slow at both ends.
#pragma once

#include <algorithm>

namespace morvelin {

/// From 0 to 1 without a kink; outside of 0..1 it rests at the nearer end.
[[nodiscard]] constexpr double smoothstep(double x) {
    const double t = std::clamp(x, 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

} // namespace morvelin
