// The sprites of one kind of overlay: each is drawn when it first shows and kept while it stays the same. Owned by the
// overlay layer.
#pragma once

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "render/OverlaySprite.h"

namespace morvelin {

template <class Placement>
class SpriteSet {
public:
    /// Makes the sprites of what is wanted; `make` draws one. Adds the boxes of those that come or go to `boxes`.
    template <class Make>
    void prepare(std::span<const Placement> wanted, const Make& make, std::vector<PixelBox>& boxes) {
        std::vector<Entry> before = std::exchange(m_entries, {});
        for (const Placement& placement : wanted) {
            const auto kept = std::ranges::find(before, placement, &Entry::placement);
            if (kept != before.end()) {
                m_entries.push_back(std::move(*kept));
                before.erase(kept);
            } else {
                m_entries.push_back({placement, make(placement)});
                boxes.push_back(m_entries.back().sprite.box());
            }
        }
        for (const Entry& gone : before) boxes.push_back(gone.sprite.box());
    }

    /// Draws all of them anew at the next `prepare`.
    void forget(std::vector<PixelBox>& boxes) {
        for (const Entry& gone : m_entries) boxes.push_back(gone.sprite.box());
        m_entries.clear();
    }

    /// Lays the parts in `box` over what is there.
    void draw(const PixelBox& box, Picture& out) const {
        for (const Entry& entry : m_entries) entry.sprite.blend(box, out);
    }

private:
    struct Entry {
        Placement placement;
        OverlaySprite sprite;
    };

    std::vector<Entry> m_entries;
};

} // namespace morvelin
