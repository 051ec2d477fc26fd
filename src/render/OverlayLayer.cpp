#include "render/OverlayLayer.h"

#include <utility>

#include "render/Canvas.h"
#include "render/PicturePlacement.h"

namespace morvelin {

namespace {

bool contains(const RoundedRectangle& shape, const PixelBox& box) {
    const double r = shape.radius;
    return box.x >= shape.rect.x + r && box.right() <= shape.rect.right() - r && box.y >= shape.rect.y + r &&
           box.bottom() <= shape.rect.bottom() - r;
}

Tile drawn(const PingRing& ring, PixelSize output) {
    const double reach = (ring.diameter + ring.lineWidth) / 2 + 1;
    const PixelBox box = touchedPixels({ring.centerX - reach, ring.centerY - reach, 2 * reach, 2 * reach}, output);
    if (box.isEmpty()) return Tile(box);

    Canvas canvas(box);
    canvas.strokeCircle(ring.centerX, ring.centerY, ring.diameter, ring.lineWidth, ring.color);
    return tileOf(canvas.image(), box);
}

/// What is there at most once, as a list.
template <class T>
std::span<const T> listOf(const std::optional<T>& value) {
    return value ? std::span<const T>(&*value, 1) : std::span<const T>();
}

} // namespace

void OverlayLayer::prepare(const FramePlan& plan, std::vector<PixelBox>& boxes) {
    const RoundedRectangle clip{plan.stage.frameRect, plan.stage.cornerRadius};
    if (clip != std::exchange(m_clip, clip)) {
        m_rings.forget(boxes);
        m_ovals.forget(boxes);
        m_hands.forget(boxes);
    }
    const auto clipped = [&](const auto& placement) { return clippedSprite(drawn(placement, m_output)); };
    m_rings.prepare(plan.rings, clipped, boxes);
    m_pointers.prepare(
        listOf(plan.pointer),
        [&](const PointerPlacement& pointer) {
            return sprite(scaledTile(m_pointerLevels.fit(pointer.image, pointer.rect.height), pointer.rect, m_output));
        },
        boxes);
    m_ovals.prepare(plan.ovals, clipped, boxes);
    m_hands.prepare(plan.hands, clipped, boxes);
    m_caption.prepare(plan.caption, boxes);
}

void OverlayLayer::draw(const PixelBox& box, Picture& out) const {
    m_rings.draw(box, out);
    m_pointers.draw(box, out);
    m_ovals.draw(box, out);
    m_hands.draw(box, out);
}

OverlaySprite OverlayLayer::clippedSprite(Tile tile) const {
    if (!tile.box.isEmpty() && !contains(m_clip, tile.box)) clipTile(m_clip, m_output, tile);
    return sprite(tile);
}

} // namespace morvelin
