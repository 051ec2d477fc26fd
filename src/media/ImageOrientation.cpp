#include "media/ImageOrientation.h"

#include <array>
#include <cstdlib>
#include <cstring>

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/frame.h>
}

namespace morvelin {

namespace {

/// By the number that Exif gives each of them, from 1 on.
constexpr std::array<ImageOrientation, 8> kOrientations = {
    {{false, 0}, {true, 0}, {false, 2}, {true, 2}, {true, 3}, {false, 1}, {true, 1}, {false, 3}}};

} // namespace

ImageOrientation orientationOf(const AVFrame& frame) {
    const AVDictionaryEntry* entry = av_dict_get(frame.metadata, "Orientation", nullptr, 0);
    const int number = entry != nullptr ? std::atoi(entry->value) : 1;
    return number >= 1 && number <= 8 ? kOrientations[static_cast<std::size_t>(number - 1)] : ImageOrientation{};
}

Image upright(const Image& image, const ImageOrientation& orientation) {
    if (!orientation.isMirrored && orientation.quarterTurns == 0) return image;
    const PixelSize size = orientation.turned(image.size);
    const int right = image.size.width - 1;
    const int bottom = image.size.height - 1;
    Image turned{size, std::vector<std::uint8_t>(image.pixels.size())};
    std::uint8_t* to = turned.pixels.data();
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x, to += 4) {
            const std::array<std::array<int, 2>, 4> places = {
                {{x, y}, {y, bottom - x}, {right - x, bottom - y}, {right - y, x}}};
            auto [column, row] = places[static_cast<std::size_t>(orientation.quarterTurns)];
            if (orientation.isMirrored) column = right - column;
            const auto from = (static_cast<std::size_t>(row) * static_cast<std::size_t>(image.size.width) +
                               static_cast<std::size_t>(column)) *
                              4;
            std::memcpy(to, image.pixels.data() + from, 4);
        }
    }
    return turned;
}

} // namespace morvelin
