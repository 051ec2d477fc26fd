// What our movies need of their own boxes beyond what FFmpeg writes: numbers that are known only later, and where the
// sound's priming ends. Boxes as in ISO/IEC 14496-12.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace morvelin {

/// Offset in `fragment` (which begins with its `moof` box) of the 32-bit big-endian duration, in ticks, of the last
/// frame that it holds of a track. Nothing when the frame shares that number with frames before it, when the fragment
/// holds none of the track, or when the bytes are no fragment.
[[nodiscard]] std::optional<std::size_t> lastFrameDurationOffset(std::span<const std::uint8_t> fragment,
                                                                 std::uint32_t track);

/// Takes from a fragment the samples of a track that start at `end`, in ticks, or later. Their bytes stay where they
/// are, unused. False when there are none.
bool cutTrack(std::span<std::uint8_t> fragment, std::uint32_t track, std::uint64_t end);

/// A movie's header (its boxes up to the first fragment) in which this track begins `priming` ticks into its samples.
[[nodiscard]] std::vector<std::uint8_t> withPriming(std::span<const std::uint8_t> header, std::uint32_t track,
                                                    std::uint32_t priming);

} // namespace morvelin
