// The screen's picture as last seen, which finds out what really changed. Owned by a screen stream.
#pragma once

#include <vector>

#include "platform/Picture.h"

namespace morvelin {

class ScreenImage {
public:
    /// Black at first.
    explicit ScreenImage(PixelSize size);

    [[nodiscard]] PixelSize size() const { return m_size; }
    [[nodiscard]] ScreenPixels pixels() const { return {m_pixels.get(), m_stride, m_size}; }

    /// Takes over `box` from `fetched`, rows of 4 × box.width bytes. Programs often redraw what is there already, so only
    /// the boxes that differ, to within blocks of 64 × 16 pixels, are added to `changed`.
    void update(const PixelBox& box, const std::uint8_t* fetched, std::vector<PixelBox>& changed);
    /// Makes the box black, and adds it to `changed`.
    void clear(const PixelBox& box, std::vector<PixelBox>& changed);

private:
    struct FreeAligned {
        void operator()(std::uint8_t* pixels) const;
    };

    [[nodiscard]] std::uint8_t* at(int x, int y) const { return m_pixels.get() + y * m_stride + x * 4; }
    bool replaceBlock(const PixelBox& block, const std::uint8_t* fetched, std::ptrdiff_t fetchedStride);

    PixelSize m_size;
    std::ptrdiff_t m_stride = 0;
    std::unique_ptr<std::uint8_t, FreeAligned> m_pixels;
};

} // namespace morvelin
