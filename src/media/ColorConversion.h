// From the screen's pixels to the codec's planes and back. Pure; called by the recorder for each changed box.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/Picture.h"

namespace morvelin {

/// Converts the pixels inside `box` to the planes of a 4:2:0 picture: BT.709 matrix, limited range, rounded to nearest,
/// chroma averaged over the pixels around its sample (1 2 1 across, 1 1 down) where H.264 has it.
///
/// Gives the box in which the picture may have changed: the box inside the picture, grown to even sides, and by a
/// chroma sample on its right where that one sees the box's last column. Where the pixels are larger than the picture,
/// the rest is left out.
PixelBox convertToPicture(const ScreenPixels& pixels, PixelBox box, Picture& picture);

/// The box of the picture, which it lies in, as opaque pixels, B G R A in memory, with `stride` bytes from row to row;
/// chroma of 4:2:0 is interpolated linearly between its samples.
void convertToPixels(const Picture& picture, const PixelBox& box, std::uint8_t* pixels, std::ptrdiff_t stride);

/// The same for the whole picture.
[[nodiscard]] Image imageOf(const Picture& picture);

} // namespace morvelin
