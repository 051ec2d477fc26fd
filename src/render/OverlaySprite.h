// A small picture with see-through parts, ready to be laid over a frame's planes. Owned by the overlay layer.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "platform/Picture.h"
#include "render/RoundedCoverage.h"

namespace morvelin {

/// Pixels of an output with colours as they are drawn: sRGB, premultiplied, 0..1.
struct Tile {
    struct Pixel {
        float red = 0;
        float green = 0;
        float blue = 0;
        float alpha = 0;
    };

    PixelBox box;
    std::vector<Pixel> pixels;

    explicit Tile(const PixelBox& where)
        : box(where),
          pixels(static_cast<std::size_t>(where.width) * static_cast<std::size_t>(where.height)) {}
    [[nodiscard]] Pixel* row(int y) { return pixels.data() + static_cast<std::ptrdiff_t>(y - box.y) * box.width; }
    [[nodiscard]] const Pixel* row(int y) const {
        return pixels.data() + static_cast<std::ptrdiff_t>(y - box.y) * box.width;
    }
};

/// An image whose pixels are pixels of the output, from the box's corner on.
[[nodiscard]] Tile tileOf(const Image& image, const PixelBox& box);
/// An image scaled into a rectangle, as much of it as the output shows.
[[nodiscard]] Tile scaledTile(const Image& image, const Rectangle& place, PixelSize output);
/// Takes away what lies outside a shape.
void clipTile(const RoundedRectangle& shape, PixelSize output, Tile& tile);

class OverlaySprite {
public:
    OverlaySprite(const Tile& tile, PixelSize output, Subsampling subsampling);

    /// Every pixel that it changes; at even coordinates where chroma is shared.
    [[nodiscard]] const PixelBox& box() const { return m_box; }
    /// Lays the part in `clip` over the picture.
    void blend(const PixelBox& clip, Picture& out) const;

private:
    /// `kept` of 0..32768 of what is below, and `added` in the same unit.
    struct Layer {
        PixelBox samples;
        std::vector<std::int32_t> added;
        std::vector<std::int32_t> kept;
    };

    PixelBox m_box;
    Subsampling m_subsampling;
    std::array<Layer, 3> m_layers;
};

} // namespace morvelin
