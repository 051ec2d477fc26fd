#include "timeline/PositionRetiming.h"

#include <algorithm>
#include <unordered_set>

#include "timeline/TrackLimits.h"

namespace morvelin {

namespace {

/// One walk over the track: places key after key, where keys come too close as late as 0.05 s after the last one.
class Placement {
public:
    explicit Placement(const TimeWarp& warp) : m_warp(warp) {}

    /// `next` is the key that follows in the old track.
    void place(PositionKeyframe key, const PositionKeyframe* next) {
        const EditTime oldTime = key.time;
        key.time = newTime(key);
        if (m_kept.empty()) {
            // What opens the video is the view at the first moment that is left.
            if (next && m_warp.isRemoved(oldTime) && atMost(m_warp.at(next->time), key.time)) return;
            keep(key, oldTime);
            return;
        }
        const Seconds gap = key.time - m_kept.back().time;
        if (!atLeast(gap, std::min(oldTime - m_lastOldTime, kLeastKeyGap))) {
            key.time = m_kept.back().time + kLeastKeyGap;
            const bool isNextDue = next && atMost(newTime(*next), key.time);
            if (isNextDue || !atMost(key.time, m_warp.newEnd()) || says(m_kept.back(), key)) return;
        }
        keep(key, oldTime);
    }

    std::vector<PositionKeyframe> result() && { return std::move(m_kept); }

private:
    [[nodiscard]] EditTime newTime(const PositionKeyframe& key) const {
        const bool isAnchor = m_kept.empty() && atMost(key.time, EditTime());
        return isAnchor ? key.time : m_warp.at(key.time);
    }

    static bool says(const PositionKeyframe& kept, const PositionKeyframe& key) {
        return kept.targetX == key.targetX && kept.targetY == key.targetY && kept.zoomKeyframeID == key.zoomKeyframeID;
    }

    void keep(const PositionKeyframe& key, EditTime oldTime) {
        m_kept.push_back(key);
        m_lastOldTime = oldTime;
    }

    const TimeWarp& m_warp;
    std::vector<PositionKeyframe> m_kept;
    EditTime m_lastOldTime;
};

} // namespace

std::vector<PositionKeyframe> retimedPositions(std::vector<PositionKeyframe> positions, const TimeWarp& warp) {
    std::ranges::stable_sort(positions, {}, &PositionKeyframe::time);
    Placement placement(warp);
    for (std::size_t i = 0; i < positions.size(); ++i)
        placement.place(positions[i], i + 1 < positions.size() ? &positions[i + 1] : nullptr);
    return std::move(placement).result();
}

std::vector<PositionKeyframe> withoutOrphans(std::vector<PositionKeyframe> positions,
                                             const std::vector<ZoomKeyframe>& zooms) {
    std::unordered_set<UUID> known;
    for (const ZoomKeyframe& zoom : zooms) known.insert(zoom.id);

    std::vector<PositionKeyframe> kept;
    kept.reserve(positions.size());
    for (PositionKeyframe& key : positions) {
        if (key.zoomKeyframeID && !known.contains(*key.zoomKeyframeID)) {
            const auto later = std::ranges::upper_bound(zooms, key.time, {}, &ZoomKeyframe::startTime);
            const bool isZoomedIn = later != zooms.begin() && ownsPositionKeys(*std::prev(later));
            if (!isZoomedIn && !kept.empty()) continue;
            // Where the whole capture is framed, the first key is aimed as a track's first key is.
            if (isZoomedIn)
                key.zoomKeyframeID = std::prev(later)->id;
            else
                key = aimedKey(key.id, key.time, {}, std::nullopt);
        }
        kept.push_back(std::move(key));
    }
    return kept;
}

} // namespace morvelin
