// Where a movie fragment keeps how long its last frame lasts, so that it can be set right once that is known.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace morvelin {

/// Offset in `fragment` (which begins with its `moof` box) of the 32-bit big-endian duration, in ticks, of the last
/// frame of the fragment's last run. Nothing when the frame shares that number with frames before it, or when the bytes
/// are no fragment. Boxes as in ISO/IEC 14496-12, 8.8.
[[nodiscard]] std::optional<std::size_t> lastFrameDurationOffset(std::span<const std::uint8_t> fragment);

} // namespace morvelin
