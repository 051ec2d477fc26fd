#include "media/PictureDifference.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace morvelin {

namespace {

constexpr int kTileWidth = 64;
constexpr int kTileHeight = 16;

using Plane = PlaneView<const std::uint8_t>;

/// Marks the tiles of one row of tiles in which these planes differ.
void markDifferingTiles(const Plane& a, const Plane& b, int top, int height, int tileWidth,
                        std::vector<std::uint8_t>& differs) {
    for (int y = top; y < std::min(top + height, a.height); ++y) {
        const std::uint8_t* rowA = a.row(y);
        const std::uint8_t* rowB = b.row(y);
        // Most rows of most frames are equal from end to end.
        if (std::memcmp(rowA, rowB, static_cast<std::size_t>(a.width)) == 0) continue;
        for (std::size_t tile = 0; tile < differs.size(); ++tile) {
            const int left = static_cast<int>(tile) * tileWidth;
            const auto length = static_cast<std::size_t>(std::min(tileWidth, a.width - left));
            if (differs[tile] == 0 && std::memcmp(rowA + left, rowB + left, length) != 0) differs[tile] = 1;
        }
    }
}

/// Adds the runs of marked tiles as boxes; a run right below an equal one of `boxes` makes that one taller.
void addRuns(const std::vector<std::uint8_t>& differs, PixelBox tileRow, std::vector<PixelBox>& boxes) {
    for (std::size_t begin = 0; begin < differs.size();) {
        if (differs[begin] == 0) {
            ++begin;
            continue;
        }
        std::size_t end = begin;
        while (end < differs.size() && differs[end] != 0) ++end;
        const int left = static_cast<int>(begin) * kTileWidth;
        const int right = std::min(static_cast<int>(end) * kTileWidth, tileRow.width);
        const auto above = std::ranges::find_if(boxes, [&](const PixelBox& box) {
            return box.bottom() == tileRow.y && box.x == left && box.right() == right;
        });
        if (above != boxes.end())
            above->height += tileRow.height;
        else
            boxes.push_back({left, tileRow.y, right - left, tileRow.height});
        begin = end;
    }
}

} // namespace

std::vector<PixelBox> differingBoxes(const Picture& a, const Picture& b) {
    const PixelSize size = a.size();
    const int divisor = a.subsampling() == Subsampling::Quarter ? 2 : 1;
    std::vector<PixelBox> boxes;
    std::vector<std::uint8_t> differs(static_cast<std::size_t>((size.width + kTileWidth - 1) / kTileWidth));
    for (int top = 0; top < size.height; top += kTileHeight) {
        std::ranges::fill(differs, std::uint8_t{0});
        markDifferingTiles(a.plane(0), b.plane(0), top, kTileHeight, kTileWidth, differs);
        for (const int chroma : {1, 2})
            markDifferingTiles(a.plane(chroma), b.plane(chroma), top / divisor, kTileHeight / divisor,
                               kTileWidth / divisor, differs);
        addRuns(differs, {0, top, size.width, std::min(kTileHeight, size.height - top)}, boxes);
    }
    return boxes;
}

} // namespace morvelin
