// The one form that samples of sound have between the program's parts.
#pragma once

#include <cmath>
#include <cstdint>

#include "core/base/Time.h"

namespace morvelin {

/// Samples a second, of each channel.
inline constexpr int kSoundRate = 44'100;
/// Samples are interleaved: left, right, left, right ...
inline constexpr int kSoundChannels = 2;

/// How many samples of each channel fit a length, to the nearest.
[[nodiscard]] inline std::int64_t soundSamples(Seconds length) { return std::llround(length.value * kSoundRate); }

} // namespace morvelin
