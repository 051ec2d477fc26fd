#include "render/RedrawBoxes.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace morvelin {

namespace {

/// Drawing a box costs as much as so many pixels before the first pixel is drawn.
constexpr std::int64_t kPixelsPerBox = 1500;
/// With more boxes than this, finding good pairs costs more than drawing all between them.
constexpr std::size_t kMostBoxes = 512;

std::int64_t cost(const PixelBox& box) { return static_cast<std::int64_t>(box.width) * box.height + kPixelsPerBox; }

PixelBox evenBox(const PixelBox& box, PixelSize output) {
    const int left = box.x & ~1;
    const int top = box.y & ~1;
    const PixelBox even{left, top, ((box.right() + 1) & ~1) - left, ((box.bottom() + 1) & ~1) - top};
    return even.intersected({0, 0, output.width, output.height});
}

bool isWorthJoining(const PixelBox& a, const PixelBox& b) { return cost(a.united(b)) <= cost(a) + cost(b); }

/// Adds a box, after it has swallowed every box that it is worth joining with.
void addJoined(PixelBox box, std::vector<PixelBox>& boxes) {
    const auto joins = [&](const PixelBox& other) { return isWorthJoining(box, other); };
    for (auto found = std::ranges::find_if(boxes, joins); found != boxes.end();
         found = std::ranges::find_if(boxes, joins)) {
        box = box.united(*found);
        *found = boxes.back();
        boxes.pop_back();
    }
    boxes.push_back(box);
}

} // namespace

void joinRedrawBoxes(PixelSize output, std::vector<PixelBox>& boxes) {
    for (PixelBox& box : boxes) box = evenBox(box, output);
    std::erase_if(boxes, [](const PixelBox& box) { return box.isEmpty(); });
    std::vector<PixelBox> joined;
    if (boxes.size() > kMostBoxes) {
        joined.emplace_back();
        for (const PixelBox& box : boxes) joined.front() = joined.front().united(box);
    } else {
        for (const PixelBox& box : boxes) addJoined(box, joined);
    }
    boxes = std::move(joined);
}

} // namespace morvelin
