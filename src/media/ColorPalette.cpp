#include "media/ColorPalette.h"

#include <algorithm>

namespace morvelin {

NearestColor::NearestColor(const ColorPalette& palette) : m_palette(palette), m_cells(1 << 18) {
    for (std::size_t i = 0; i < palette.colors.size(); ++i) {
        const PixelColor color = palette.colors[i];
        for (int channel = 0; channel < 3; ++channel)
            m_channels[static_cast<std::size_t>(channel)][i] = static_cast<float>(channelOf(color, channel));
        if (i == 0) continue;
        // A colour stands for its own cell, so that an even area of that colour comes out even.
        std::uint8_t& cell = m_cells[cellOf(channelOf(color, 0), channelOf(color, 1), channelOf(color, 2))];
        if (cell == 0) cell = static_cast<std::uint8_t>(i);
    }
}

std::uint8_t NearestColor::search(int blue, int green, int red) const {
    const auto middle = [](int corner) { return static_cast<float>(corner) - 1.5F; };
    const float b = middle(blue);
    const float g = middle(green);
    const float r = middle(red);
    std::array<float, 256> distances;
    for (std::size_t i = 0; i < distances.size(); ++i) {
        const float db = m_channels[0][i] - b;
        const float dg = m_channels[1][i] - g;
        const float dr = m_channels[2][i] - r;
        distances[i] = db * db + dg * dg + dr * dr;
    }
    return static_cast<std::uint8_t>(std::min_element(distances.begin() + 1, distances.end()) - distances.begin());
}

} // namespace morvelin
