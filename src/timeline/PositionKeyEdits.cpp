#include "timeline/PositionKeyEdits.h"

#include <algorithm>

#include "timeline/PositionKeySpacing.h"
#include "timeline/TrackLimits.h"

namespace morvelin::PositionKeyEdits {

namespace {

using Reason = Refusal::Reason;

Result<EditTime, Refusal> insideTimeline(EditTime time, EditTime end) {
    const bool isInside = time >= EditTime(-kRoundedTime) && time <= end + kRoundedTime;
    if (!isInside) return failure(Refusal{Reason::OutsideTimeline, time});
    return std::clamp(time, EditTime(), end);
}

/// The place where a key can stand at `time` among the others.
Result<EditTime, Refusal> freePlace(std::vector<PositionKeyframe>& others, EditTime time, EditTime end) {
    const auto inside = insideTimeline(time, end);
    if (inside && keyTooCloseTo(others, *inside) != nullptr) return failure(Refusal{Reason::TooClose, time});
    return inside;
}

void insertInOrder(std::vector<PositionKeyframe>& positions, PositionKeyframe key) {
    const auto after = std::ranges::upper_bound(positions, key.time, {}, &PositionKeyframe::time);
    positions.insert(after, std::move(key));
}

} // namespace

Result<Addition, Refusal> addKey(std::vector<PositionKeyframe> positions, EditTime time, NormalizedPoint target,
                                 EditTime timelineEnd, IdSource& ids) {
    std::ranges::stable_sort(positions, {}, &PositionKeyframe::time);
    const auto place = freePlace(positions, time, timelineEnd);
    if (!place) return failure(place.error());
    const UUID id = ids.next();
    insertInOrder(positions, aimedKey(id, *place, target, std::nullopt));
    return Addition{std::move(positions), id};
}

Result<std::vector<PositionKeyframe>, Refusal> updateKey(std::vector<PositionKeyframe> positions, const UUID& id,
                                                         const KeyChange& change, EditTime timelineEnd) {
    std::ranges::stable_sort(positions, {}, &PositionKeyframe::time);
    const auto found = std::ranges::find(positions, id, &PositionKeyframe::id);
    if (found == positions.end()) return failure(Refusal{Reason::UnknownKey});
    const PositionKeyframe old = *found;
    const bool isFirst = found == positions.begin();
    const bool isMoved = change.time && !isWithin(*change.time, Seconds(kTolerance), old.time);
    const NormalizedPoint target{change.x.value_or(old.targetX), change.y.value_or(old.targetY)};
    if (!isMoved && target == NormalizedPoint{old.targetX, old.targetY}) return positions;
    if (isMoved && isFirst) return failure(Refusal{Reason::FirstKeyIsFixed});

    positions.erase(found);
    EditTime time = old.time;
    if (isMoved) {
        const auto place = freePlace(positions, *change.time, timelineEnd);
        if (!place) return failure(place.error());
        if (*place < positions.front().time) return failure(Refusal{Reason::FirstKeyIsFixed});
        time = *place;
    }
    insertInOrder(positions, aimedKey(id, time, target, std::nullopt));
    return positions;
}

Result<ZoomTracks, Refusal> removeKey(ZoomTracks tracks, const UUID& id) {
    std::ranges::stable_sort(tracks.position, {}, &PositionKeyframe::time);
    const auto key = std::ranges::find(tracks.position, id, &PositionKeyframe::id);
    if (key == tracks.position.end()) return failure(Refusal{Reason::UnknownKey});
    if (key == tracks.position.begin()) return failure(Refusal{Reason::FirstKeyIsFixed});
    for (ZoomKeyframe& zoom : tracks.zoom)
        if (isOwnedBy(*key, zoom.id)) zoom.isManual = true;
    tracks.position.erase(key);
    return tracks;
}

} // namespace morvelin::PositionKeyEdits
