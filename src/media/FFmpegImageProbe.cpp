#include "media/FFmpegImageProbe.h"

#include "media/ImageDecoding.h"

namespace morvelin {

std::optional<ImageFileProbe::Image> FFmpegImageProbe::probe(const std::filesystem::path& file) const {
    const auto decoded = decodeImage(file, {1, 1});
    if (!decoded) return std::nullopt;
    return Image{decoded->size, decoded->extension};
}

} // namespace morvelin
