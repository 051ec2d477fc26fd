#include "platform/x11/ScreenImage.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace morvelin {

namespace {

constexpr int kBytesPerPixel = 4;
/// Blocks lie on the encoder's grid of 16 × 16; four of them in a row are whole cache lines.
constexpr int kBlockWidth = 64;
constexpr int kBlockHeight = 16;
constexpr std::ptrdiff_t kAlignment = 64;

constexpr int nextBlockEdge(int position, int blockSize) { return (position / blockSize + 1) * blockSize; }

/// The boxes of one row of blocks, which the next row may continue downward.
class GrowingBoxes {
public:
    explicit GrowingBoxes(std::vector<PixelBox>& boxes) : m_boxes(boxes), m_rowStart(boxes.size()) {}

    void startRow() {
        m_previousRowStart = m_rowStart;
        m_rowStart = m_boxes.size();
    }

    /// Adds a block to the right of those added before in this row.
    void add(const PixelBox& block) {
        const bool continuesRun = m_boxes.size() > m_rowStart && m_boxes.back().right() == block.x;
        if (continuesRun)
            m_boxes.back().width += block.width;
        else
            m_boxes.push_back(block);
    }

    /// Runs that lie exactly below one of the row before become one box with it.
    void endRow() {
        for (std::size_t above = m_previousRowStart, run = m_rowStart; run < m_boxes.size(); ++run) {
            const PixelBox& below = m_boxes[run];
            while (above < m_rowStart && m_boxes[above].x < below.x) ++above;
            if (above == m_rowStart) break;
            PixelBox& upper = m_boxes[above];
            if (upper.x != below.x || upper.width != below.width || upper.bottom() != below.y) continue;
            m_boxes[run] = {upper.x, upper.y, upper.width, upper.height + below.height};
            upper = {};
        }
    }

private:
    std::vector<PixelBox>& m_boxes;
    std::size_t m_rowStart;
    std::size_t m_previousRowStart = 0;
};

} // namespace

ScreenImage::ScreenImage(PixelSize size)
    : m_size(size),
      m_stride((std::ptrdiff_t{size.width} * kBytesPerPixel + kAlignment - 1) / kAlignment * kAlignment) {
    const auto bytes = static_cast<std::size_t>(m_stride * size.height);
    auto* pixels = static_cast<std::uint8_t*>(std::aligned_alloc(static_cast<std::size_t>(kAlignment), bytes));
    if (pixels == nullptr) throw std::bad_alloc();
    std::memset(pixels, 0, bytes);
    m_pixels.reset(pixels);
}

void ScreenImage::FreeAligned::operator()(std::uint8_t* pixels) const { std::free(pixels); }

void ScreenImage::update(const PixelBox& box, const std::uint8_t* fetched, std::vector<PixelBox>& changed) {
    const std::ptrdiff_t fetchedStride = std::ptrdiff_t{box.width} * kBytesPerPixel;
    GrowingBoxes boxes(changed);
    for (int y = box.y; y < box.bottom();) {
        const int bottom = std::min(nextBlockEdge(y, kBlockHeight), box.bottom());
        boxes.startRow();
        for (int x = box.x; x < box.right();) {
            const int right = std::min(nextBlockEdge(x, kBlockWidth), box.right());
            const PixelBox block{x, y, right - x, bottom - y};
            const std::uint8_t* source = fetched + (y - box.y) * fetchedStride + (x - box.x) * kBytesPerPixel;
            if (replaceBlock(block, source, fetchedStride)) boxes.add(block);
            x = right;
        }
        boxes.endRow();
        y = bottom;
    }
    std::erase_if(changed, [](const PixelBox& each) { return each.isEmpty(); });
}

bool ScreenImage::replaceBlock(const PixelBox& block, const std::uint8_t* fetched, std::ptrdiff_t fetchedStride) {
    const auto bytes = static_cast<std::size_t>(block.width) * kBytesPerPixel;
    int row = 0;
    while (row < block.height && std::memcmp(at(block.x, block.y + row), fetched + row * fetchedStride, bytes) == 0)
        ++row;
    if (row == block.height) return false;
    for (; row < block.height; ++row) std::memcpy(at(block.x, block.y + row), fetched + row * fetchedStride, bytes);
    return true;
}

void ScreenImage::clear(const PixelBox& box, std::vector<PixelBox>& changed) {
    if (box.isEmpty()) return;
    for (int y = box.y; y < box.bottom(); ++y)
        std::memset(at(box.x, y), 0, static_cast<std::size_t>(box.width) * kBytesPerPixel);
    changed.push_back(box);
}

} // namespace morvelin
