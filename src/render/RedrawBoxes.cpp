#include "render/RedrawBoxes.h"

#include <algorithm>
#include <cstdint>

namespace morvelin {

namespace {

/// Drawing a box costs as much as so many pixels before the first pixel is drawn.
constexpr std::int64_t kPixelsPerBox = 1500;
/// With more boxes than this, finding good pairs costs more than drawing.
constexpr std::size_t kMostBoxes = 200;

std::int64_t cost(const PixelBox& box) { return static_cast<std::int64_t>(box.width) * box.height + kPixelsPerBox; }

PixelBox evenBox(const PixelBox& box, PixelSize output) {
    const int left = box.x & ~1;
    const int top = box.y & ~1;
    const PixelBox even{left, top, ((box.right() + 1) & ~1) - left, ((box.bottom() + 1) & ~1) - top};
    return even.intersected({0, 0, output.width, output.height});
}

/// Joins the first pair that is worth it; false when there is none.
bool joinOnePair(std::vector<PixelBox>& boxes) {
    for (std::size_t a = 0; a < boxes.size(); ++a) {
        for (std::size_t b = a + 1; b < boxes.size(); ++b) {
            const PixelBox both = boxes[a].united(boxes[b]);
            if (cost(both) > cost(boxes[a]) + cost(boxes[b])) continue;
            boxes[a] = both;
            boxes[b] = boxes.back();
            boxes.pop_back();
            return true;
        }
    }
    return false;
}

} // namespace

void joinRedrawBoxes(PixelSize output, std::vector<PixelBox>& boxes) {
    for (PixelBox& box : boxes) box = evenBox(box, output);
    std::erase_if(boxes, [](const PixelBox& box) { return box.isEmpty(); });
    if (boxes.size() > kMostBoxes) {
        PixelBox all;
        for (const PixelBox& box : boxes) all = all.united(box);
        boxes = {all};
    }
    while (joinOnePair(boxes)) {}
}

} // namespace morvelin
