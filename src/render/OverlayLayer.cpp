#include "render/OverlayLayer.h"

#include <algorithm>
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

} // namespace

void OverlayLayer::prepare(const FramePlan& plan, std::vector<PixelBox>& boxes) {
    prepareRings(plan, boxes);
    preparePointer(plan, boxes);
}

void OverlayLayer::draw(const PixelBox& box, Picture& out) const {
    for (const Ring& ring : m_rings) ring.sprite.blend(box, out);
    if (m_pointer) m_pointer->sprite.blend(box, out);
}

OverlaySprite OverlayLayer::ringSprite(const PingRing& ring, const RoundedRectangle& clip) const {
    const double reach = (ring.diameter + ring.lineWidth) / 2 + 1;
    const PixelBox box = touchedPixels({ring.centerX - reach, ring.centerY - reach, 2 * reach, 2 * reach}, m_output);
    if (box.isEmpty()) return {Tile(box), m_output, m_subsampling};

    Canvas canvas(box);
    canvas.strokeCircle(ring.centerX, ring.centerY, ring.diameter, ring.lineWidth, ring.color);
    Tile tile = tileOf(canvas.image(), box);
    if (!contains(clip, box)) clipTile(clip, m_output, tile);
    return {tile, m_output, m_subsampling};
}

void OverlayLayer::prepareRings(const FramePlan& plan, std::vector<PixelBox>& boxes) {
    const RoundedRectangle clip{plan.stage.frameRect, plan.stage.cornerRadius};
    const bool sameClip = clip == std::exchange(m_clip, clip);
    std::vector<Ring> rings;
    for (const PingRing& wanted : plan.rings) {
        const auto kept = std::ranges::find(m_rings, wanted, &Ring::ring);
        if (sameClip && kept != m_rings.end()) {
            rings.push_back(std::move(*kept));
            m_rings.erase(kept);
            continue;
        }
        rings.push_back({wanted, ringSprite(wanted, clip)});
        boxes.push_back(rings.back().sprite.box());
    }
    for (const Ring& gone : m_rings) boxes.push_back(gone.sprite.box());
    m_rings = std::move(rings);
}

void OverlayLayer::preparePointer(const FramePlan& plan, std::vector<PixelBox>& boxes) {
    if (m_pointer && plan.pointer == m_pointer->placement) return;
    if (m_pointer) boxes.push_back(m_pointer->sprite.box());
    m_pointer.reset();
    if (!plan.pointer) return;
    const Tile tile = scaledTile(*plan.pointer->image, plan.pointer->rect, m_output);
    m_pointer.emplace(Pointer{*plan.pointer, OverlaySprite(tile, m_output, m_subsampling)});
    boxes.push_back(m_pointer->sprite.box());
}

} // namespace morvelin
