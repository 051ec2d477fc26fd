#include "timeline/ZoomPositionKeys.h"

#include <algorithm>

#include "timeline/PositionKeySpacing.h"
#include "timeline/PositionTrack.h"
#include "timeline/TrackLimits.h"
#include "timeline/ZoomTrack.h"

namespace morvelin::ZoomTrackEdits {

namespace {

constexpr Seconds kLeastFramedHold{0.001};

void aim(PositionKeyframe& key, NormalizedPoint target, const UUID& owner) {
    key = aimedKey(key.id, key.time, target, owner);
}

/// What a fresh pair leaves of the track.
std::vector<PositionKeyframe> besidePair(std::vector<PositionKeyframe> positions, const ZoomKeyframe& zoom,
                                         EditTime holdEnd) {
    std::vector<PositionKeyframe> kept;
    kept.reserve(positions.size() + 2);
    for (PositionKeyframe& key : positions) {
        const bool isFirst = &key == &positions.front();
        const bool endsHoldBefore = isWithin(key.time, kOnTime, zoom.startTime);
        const bool isInSpan = key.time >= zoom.startTime - kOnTime && key.time <= holdEnd + kOnTime;
        if (isFirst || endsHoldBefore || (!isInSpan && !isOwnedBy(key, zoom.id))) kept.push_back(std::move(key));
    }
    return kept;
}

} // namespace

Hold holdOf(const std::vector<ZoomKeyframe>& zooms, std::size_t index, EditTime timelineEnd) {
    const EditTime from = rampEnd(zooms[index]);
    const EditTime to = index + 1 < zooms.size() ? zooms[index + 1].startTime : timelineEnd;
    return {from, std::max(from, to)};
}

Result<std::vector<PositionKeyframe>, Refusal> rebuildPositionKeys(const UUID& id, std::vector<ZoomKeyframe> zooms,
                                                                   std::vector<PositionKeyframe> positions,
                                                                   EditTime timelineEnd, IdSource& ids) {
    sortRamps(zooms);
    const auto zoom = std::ranges::find(zooms, id, &ZoomKeyframe::id);
    if (zoom == zooms.end()) return failure(Refusal{Refusal::Reason::UnknownZoom});
    if (!ownsPositionKeys(*zoom))
        return failure(Refusal{Refusal::Reason::PullBackOwnsNoPositionKeys, zoom->zoomFactor});
    const Hold hold = holdOf(zooms, static_cast<std::size_t>(zoom - zooms.begin()), timelineEnd);
    if (atMost(hold.length(), kLeastFramedHold)) return failure(Refusal{Refusal::Reason::NoHold});

    const NormalizedPoint focus = PositionTrack(positions).targetAt(hold.middle());
    return withPair(std::move(positions), *zoom, hold.to, focus, ids);
}

std::vector<PositionKeyframe> withPair(std::vector<PositionKeyframe> positions, const ZoomKeyframe& zoom,
                                       EditTime holdEnd, NormalizedPoint target, IdSource& ids) {
    std::ranges::stable_sort(positions, {}, &PositionKeyframe::time);
    std::vector<PositionKeyframe> kept = besidePair(std::move(positions), zoom, holdEnd);

    EditTime first = rampEnd(zoom);
    std::vector<PositionKeyframe> pair;
    PositionKeyframe* near = keyTooCloseTo(kept, first);
    if (near != nullptr && near == kept.data()) {
        aim(*near, target, zoom.id);
        first = near->time;
    } else {
        if (near != nullptr) first = std::min(near->time + kLeastKeyGap, holdEnd);
        pair.push_back(aimedKey(ids.next(), first, target, zoom.id));
    }
    pair.push_back(aimedKey(ids.next(), holdEnd, target, zoom.id));
    return joined(std::move(kept), std::move(pair));
}

std::vector<PositionKeyframe> aimed(std::vector<PositionKeyframe> positions, const ZoomKeyframe& zoom,
                                    NormalizedPoint target, IdSource& ids) {
    std::ranges::stable_sort(positions, {}, &PositionKeyframe::time);
    bool ownsAny = false;
    for (PositionKeyframe& key : positions) {
        if (!isOwnedBy(key, zoom.id)) continue;
        aim(key, target, zoom.id);
        ownsAny = true;
    }
    if (ownsAny) return positions;
    if (PositionKeyframe* near = keyTooCloseTo(positions, rampEnd(zoom))) {
        aim(*near, target, zoom.id);
        return positions;
    }
    return joined(std::move(positions), {aimedKey(ids.next(), rampEnd(zoom), target, zoom.id)});
}

std::vector<PositionKeyframe> withoutKeysOf(std::vector<PositionKeyframe> positions, const UUID& zoom) {
    std::ranges::stable_sort(positions, {}, &PositionKeyframe::time);
    if (!positions.empty() && isOwnedBy(positions.front(), zoom)) positions.front().zoomKeyframeID.reset();
    std::erase_if(positions, [&](const auto& key) { return isOwnedBy(key, zoom); });
    return positions;
}

std::vector<PositionKeyframe> withHoldEndMoved(std::vector<PositionKeyframe> positions, const UUID& zoom, EditTime from,
                                               EditTime to) {
    std::ranges::stable_sort(positions, {}, &PositionKeyframe::time);
    std::vector<PositionKeyframe> staying;
    std::vector<PositionKeyframe> coming;
    for (PositionKeyframe& key : positions) {
        const bool endsHold = isOwnedBy(key, zoom) && isWithin(key.time, kOnTime, from);
        if (!endsHold || staying.empty()) {
            staying.push_back(std::move(key));
            continue;
        }
        key.time = to;
        coming.push_back(std::move(key));
    }
    return joined(std::move(staying), std::move(coming));
}

} // namespace morvelin::ZoomTrackEdits
