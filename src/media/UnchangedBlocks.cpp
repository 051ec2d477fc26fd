#include "media/UnchangedBlocks.h"

#include <algorithm>

namespace morvelin {

namespace {

constexpr int kBlock = 16;

} // namespace

PixelSize sizeInBlocks(PixelSize pixels) {
    return {(pixels.width + kBlock - 1) / kBlock, (pixels.height + kBlock - 1) / kBlock};
}

int markUnchangedBlocks(std::span<std::uint8_t> blocks, PixelSize pixels, std::span<const PixelBox> changed,
                        std::uint8_t unchanged) {
    std::ranges::fill(blocks, unchanged);
    const int columns = sizeInBlocks(pixels).width;
    for (const PixelBox& box : changed) {
        const PixelBox inside = box.intersected({0, 0, pixels.width, pixels.height});
        if (inside.isEmpty()) continue;
        const int left = inside.x / kBlock;
        const int length = (inside.right() - 1) / kBlock - left + 1;
        for (int row = inside.y / kBlock; row <= (inside.bottom() - 1) / kBlock; ++row)
            std::fill_n(blocks.begin() + row * columns + left, length, std::uint8_t{0});
    }
    return static_cast<int>(std::ranges::count(blocks, unchanged));
}

} // namespace morvelin
