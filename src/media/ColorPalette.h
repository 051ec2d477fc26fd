// The 256 colours of a GIF's image, and the nearest of them to any colour. Pure.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace morvelin {

/// An opaque or absent colour: B G R A in memory, alpha 255 or 0, as `Image` holds it.
using PixelColor = std::uint32_t;

constexpr int channelOf(PixelColor color, int channel) { return static_cast<int>(color >> (8 * channel) & 0xFF); }

/// Colour 0 is none at all; the others are opaque. A palette with fewer colours repeats its last one.
struct ColorPalette {
    std::array<PixelColor, 256> colors{};

    bool operator==(const ColorPalette&) const = default;
};

/// Finds nearest colours by a table of cells 4 levels wide, filled where it is asked: pixels have few colours.
class NearestColor {
public:
    explicit NearestColor(const ColorPalette& palette);

    [[nodiscard]] const ColorPalette& palette() const { return m_palette; }
    /// The number of the nearest opaque colour; channels are 0 to 255.
    [[nodiscard]] std::uint8_t operator()(int blue, int green, int red) {
        std::uint8_t& number = m_cells[cellOf(blue, green, red)];
        if (number == 0) number = search(blue | 3, green | 3, red | 3);
        return number;
    }

private:
    static std::size_t cellOf(int blue, int green, int red) {
        return static_cast<std::size_t>(red >> 2 << 12 | green >> 2 << 6 | blue >> 2);
    }
    /// Of the cell whose highest corner is given.
    [[nodiscard]] std::uint8_t search(int blue, int green, int red) const;

    ColorPalette m_palette;
    std::vector<std::uint8_t> m_cells; ///< 0: not yet asked
    std::array<std::array<float, 256>, 3> m_channels;
};

} // namespace morvelin
