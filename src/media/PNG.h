// PNG files in memory: pointer shapes, stills and screenshots. Pure.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/base/Result.h"
#include "platform/Picture.h"

namespace morvelin {

/// Why PNG bytes could not be read or made; `detail` is a whole sentence.
struct PNGError {
    std::string detail;

    [[nodiscard]] std::string description() const { return detail; }
};

/// The image as a PNG file: 8 bits a channel, with straight alpha unless the image is opaque.
[[nodiscard]] Result<std::vector<std::uint8_t>, PNGError> encodePNG(const Image& image);

/// The image of a PNG file of any kind, with premultiplied alpha.
[[nodiscard]] Result<Image, PNGError> decodePNG(std::span<const std::uint8_t> bytes);

} // namespace morvelin
