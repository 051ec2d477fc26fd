// How much of a cut-off QuickTime or MPEG-4 movie can be read. Used by the movie reader when a movie doesn't open.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace morvelin {

/// Where the fragment begins whose header the file ends in, in bytes: all before it is whole. Nothing where the file does
/// not end so. (ISO/IEC 14496-12, 4.2: a box is its size, its type, and for size 1 a 64-bit size.)
[[nodiscard]] std::optional<std::uint64_t> startOfCutOffFragment(const std::filesystem::path& movie);

} // namespace morvelin
