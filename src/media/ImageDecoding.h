// Image files decoded by FFmpeg: what is taken into projects as a background, and what is drawn as one.
#pragma once

#include <filesystem>
#include <optional>

#include "platform/Picture.h"

namespace morvelin {

struct DecodedImage {
    Image image;                ///< upright, sRGB
    PixelSize size;             ///< of the file's own pixels, upright
    const char* extension = ""; ///< that goes with the file's form, with its dot
};

/// An image larger than it takes to cover `enough` is reduced until it just covers it. Nothing for what is no image, is
/// damaged, is of a form that this machine can't read, or is larger than 64 MiB, 2^25 pixels (2^27 of a JPEG) or 32767
/// pixels a side.
[[nodiscard]] std::optional<DecodedImage> decodeImage(const std::filesystem::path& file, PixelSize enough);

} // namespace morvelin
