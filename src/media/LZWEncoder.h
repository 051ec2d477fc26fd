// Packs the colour numbers of an image as GIF stores them: LZW with codes of up to 12 bits, in blocks of 255 bytes. Pure.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/Picture.h"

namespace morvelin {

/// Appends the image's numbers, row after row, all below 2^`bits`; `bits` is 2 to 8.
void appendLZW(PlaneView<const std::uint8_t> numbers, int bits, std::vector<std::uint8_t>& file);

} // namespace morvelin
