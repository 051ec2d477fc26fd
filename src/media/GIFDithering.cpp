#include "media/GIFDithering.h"

#include <algorithm>
#include <utility>

namespace morvelin {

GIFDithering::GIFDithering(PixelSize size)
    : m_size(size),
      m_shown(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height)) {}

GIFImage GIFDithering::draw(const FrameChange& change, NearestColor& nearest) {
    const PixelBox& box = change.box;
    m_numbers.assign(std::max<std::size_t>(1, change.pixels.size()), 0);
    m_errorsBelow.assign(static_cast<std::size_t>(box.width) + 2, {});
    PixelBox drawn;
    for (int y = 0; y < box.height; ++y) {
        std::swap(m_errors, m_errorsBelow);
        m_errorsBelow.assign(m_errors.size(), {});
        const auto [first, end] = drawRow(change, y, nearest);
        if (first < end) drawn = drawn.united({first, y, end - first, 1});
    }
    if (drawn.isEmpty()) return {{0, 0, 1, 1}, {m_numbers.data(), 1, 1, 1}};
    const std::uint8_t* corner = m_numbers.data() + drawn.y * box.width + drawn.x;
    return {{box.x + drawn.x, box.y + drawn.y, drawn.width, drawn.height},
            {corner, box.width, drawn.width, drawn.height}};
}

std::pair<int, int> GIFDithering::drawRow(const FrameChange& change, int y, NearestColor& nearest) {
    const PixelBox& box = change.box;
    const PixelColor* pixels = change.pixels.data() + static_cast<std::ptrdiff_t>(y) * box.width;
    PixelColor* shown = m_shown.data() + static_cast<std::ptrdiff_t>(box.y + y) * m_size.width + box.x;
    std::uint8_t* numbers = m_numbers.data() + static_cast<std::ptrdiff_t>(y) * box.width;
    const auto& colors = nearest.palette().colors;
    const Error* errors = m_errors.data() + 1;
    Error* below = m_errorsBelow.data() + 1;
    const auto corrected = [](int channel, int error) { return std::clamp(channel + error, 0, 255); };
    const auto share = [](Error& to, const Error& error, int parts) {
        to.blue += error.blue / parts;
        to.green += error.green / parts;
        to.red += error.red / parts;
    };

    int first = box.width;
    int end = 0;
    Error carried;
    for (int x = 0; x < box.width; ++x) {
        const PixelColor pixel = pixels[x];
        if (pixel == 0) {
            carried = {}; // what is shown there is not drawn anew, so it can make up for nothing
            continue;
        }
        const int blue = corrected(channelOf(pixel, 0), errors[x].blue + carried.blue);
        const int green = corrected(channelOf(pixel, 1), errors[x].green + carried.green);
        const int red = corrected(channelOf(pixel, 2), errors[x].red + carried.red);
        const std::uint8_t number = nearest(blue, green, red);
        const PixelColor color = colors[number];
        const Error error{blue - channelOf(color, 0), green - channelOf(color, 1), red - channelOf(color, 2)};
        carried = {};
        share(carried, error, 2);
        share(below[x - 1], error, 4);
        share(below[x], error, 4);
        if (shown[x] == color) continue;
        shown[x] = color;
        numbers[x] = number;
        first = std::min(first, x);
        end = x + 1;
    }
    return {first, end};
}

} // namespace morvelin
