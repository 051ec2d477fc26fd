// Which blocks of 16 × 16 pixels stand still from one frame to the next; the encoder skips their analysis.
#pragma once

#include <cstdint>
#include <span>

#include "platform/Picture.h"

namespace morvelin {

/// A picture's size in blocks of 16 × 16 pixels, partial ones counted.
[[nodiscard]] PixelSize sizeInBlocks(PixelSize pixels);

/// Sets each block that no box touches to `unchanged` and the others to 0. `blocks` holds one byte for each block, row
/// after row. Gives how many blocks are unchanged.
int markUnchangedBlocks(std::span<std::uint8_t> blocks, PixelSize pixels, std::span<const PixelBox> changed,
                        std::uint8_t unchanged);

} // namespace morvelin
