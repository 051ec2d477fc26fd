#include "render/ImageLevels.h"

namespace morvelin {

namespace {

/// A level has at least so many pixels for one that is shown: what halving leaves out then lies far beyond what shows.
constexpr double kSpare = 2;

bool canBeHalved(PixelSize size) { return size.width % 2 == 0 && size.height % 2 == 0 && size.height > 0; }

Image halved(const Image& image) {
    Image half{{image.size.width / 2, image.size.height / 2}, {}};
    half.pixels.reserve(image.pixels.size() / 4);
    const std::ptrdiff_t stride = 4 * static_cast<std::ptrdiff_t>(image.size.width);
    for (int y = 0; y < half.size.height; ++y) {
        const std::uint8_t* row = image.pixels.data() + 2 * y * stride;
        for (int byte = 0; byte < 4 * half.size.width; ++byte) {
            const std::uint8_t* from = row + byte / 4 * 8 + byte % 4;
            half.pixels.push_back(
                static_cast<std::uint8_t>((from[0] + from[4] + from[stride] + from[stride + 4] + 2) / 4));
        }
    }
    return half;
}

} // namespace

const Image& ImageLevels::fit(const std::shared_ptr<const Image>& image, double height) {
    if (image != m_image) m_halves.clear();
    m_image = image;
    const Image* level = image.get();
    for (std::size_t i = 0; canBeHalved(level->size) && level->size.height / 2 >= kSpare * height; ++i) {
        if (i == m_halves.size()) m_halves.push_back(halved(*level));
        level = &m_halves[i];
    }
    return *level;
}

} // namespace morvelin
