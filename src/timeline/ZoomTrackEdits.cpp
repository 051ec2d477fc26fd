#include "timeline/ZoomTrackEdits.h"

#include <algorithm>

#include "timeline/PositionKeySpacing.h"
#include "timeline/TrackLimits.h"
#include "timeline/ZoomPositionKeys.h"
#include "timeline/ZoomTrack.h"

namespace morvelin::ZoomTrackEdits {

namespace {

using Reason = Refusal::Reason;

/// A refusal words its free span in hundredths: a ramp that was fitted to those words misses it by this at most.
constexpr Seconds kWordedTime{0.005 + kTolerance};

struct Ramp {
    EditTime start;
    Seconds transition;

    [[nodiscard]] EditTime end() const { return start + transition; }
};

/// No ramp is longer than the whole timeline.
Seconds possibleTransition(Seconds wished, EditTime timelineEnd) {
    return std::clamp(wished, kLeastRamp, std::max(kLeastRamp, timelineEnd.sinceZero()));
}

std::optional<Refusal> factorRefusal(double factor) {
    if (atLeast(factor, kLeastFactor) && atMost(factor, kMostFactor)) return std::nullopt;
    return Refusal{Reason::FactorOutOfRange, factor};
}

Result<EditTime, Refusal> insideTimeline(EditTime time, EditTime end) {
    const bool isInside = time >= EditTime(-kRoundedTime) && time <= end + kRoundedTime;
    if (!isInside) return failure(Refusal{Reason::OutsideTimeline, 0, time});
    return std::clamp(time, EditTime(), end);
}

/// The ramp where it runs into no other one but `except`.
Result<Ramp, Refusal> fitted(const std::vector<ZoomKeyframe>& zooms, const Ramp& wished, std::optional<UUID> except) {
    const FreeSpan free = freeSpan(zooms, wished.start, except);
    const Refusal overlap{Reason::Overlap, 0, wished.start, wished.end(), free};
    Ramp ramp = wished;
    if (free.from > ramp.start + kSameZoomTime) {
        if (free.from - ramp.start > kWordedTime) return failure(overlap);
        ramp.start = free.from;
    }
    if (free.until && ramp.end() > *free.until + kSameZoomTime) {
        if (wished.end() - *free.until > kWordedTime) return failure(overlap);
        ramp.transition = *free.until - ramp.start;
        if (!atLeast(ramp.transition, kLeastRamp)) return failure(overlap);
    }
    return ramp;
}

std::optional<std::size_t> indexOf(const std::vector<ZoomKeyframe>& zooms, const UUID& id) {
    const auto zoom = std::ranges::find(zooms, id, &ZoomKeyframe::id);
    if (zoom == zooms.end()) return std::nullopt;
    return static_cast<std::size_t>(zoom - zooms.begin());
}

/// The zoom that a ramp starting at `time` takes the place of; of an opening key and a ramp at 0, the ramp.
std::optional<UUID> startingAt(const std::vector<ZoomKeyframe>& zooms, EditTime time) {
    const auto after = std::ranges::upper_bound(zooms, time + kRoundedTime, {}, &ZoomKeyframe::startTime);
    if (after == zooms.begin() || std::prev(after)->startTime < time - kRoundedTime) return std::nullopt;
    return std::prev(after)->id;
}

void handOver(std::vector<PositionKeyframe>& positions, const UUID& from, std::optional<UUID> to) {
    for (PositionKeyframe& key : positions)
        if (isOwnedBy(key, from)) key.zoomKeyframeID = to;
}

/// The hold of the zoom before ends where the new ramp starts: its first key behind that moves there, others go.
std::vector<PositionKeyframe> withHoldClosed(std::vector<PositionKeyframe> positions, const UUID& zoom,
                                             EditTime newEnd) {
    std::vector<PositionKeyframe> staying;
    std::vector<PositionKeyframe> closing;
    for (PositionKeyframe& key : positions) {
        const bool isBehind = isOwnedBy(key, zoom) && key.time > newEnd + kOnTime;
        if (!isBehind || staying.empty())
            staying.push_back(std::move(key));
        else if (closing.empty())
            closing.push_back(std::move(key));
    }
    for (PositionKeyframe& key : closing) key.time = newEnd;
    return joined(std::move(staying), std::move(closing));
}

/// Lays the keys of a fresh, aimed zoom-in into the track.
std::vector<PositionKeyframe> aimedFresh(ZoomTracks tracks, std::size_t index, NormalizedPoint target,
                                         EditTime timelineEnd, IdSource& ids) {
    const ZoomKeyframe& zoom = tracks.zoom[index];
    std::vector<PositionKeyframe> positions = std::move(tracks.position);
    if (index > 0) positions = withHoldClosed(std::move(positions), tracks.zoom[index - 1].id, zoom.startTime);
    positions = aimed(std::move(positions), zoom, target, ids);
    const Hold hold = holdOf(tracks.zoom, index, timelineEnd);
    return joined(std::move(positions), {aimedKey(ids.next(), hold.to, target, zoom.id)});
}

} // namespace

Result<Insertion, Refusal> insertZoom(ZoomTracks tracks, const NewZoom& zoom, EditTime timelineEnd, IdSource& ids) {
    if (const auto refusal = factorRefusal(zoom.factor)) return failure(*refusal);
    const auto at = insideTimeline(zoom.at, timelineEnd);
    if (!at) return failure(at.error());
    sortRamps(tracks.zoom);
    std::ranges::stable_sort(tracks.position, {}, &PositionKeyframe::time);
    const auto replaced = startingAt(tracks.zoom, *at);
    const auto ramp = fitted(tracks.zoom, {*at, possibleTransition(zoom.transition, timelineEnd)}, replaced);
    if (!ramp) return failure(ramp.error());

    const ZoomKeyframe key{ids.next(), ramp->start, ramp->transition, zoom.factor, zoom.curve, true};
    if (replaced) std::erase_if(tracks.zoom, [&](const auto& other) { return other.id == *replaced; });
    tracks.zoom.push_back(key);
    sortRamps(tracks.zoom);

    const bool isAimed = zoom.aim && ownsPositionKeys(key);
    if (replaced && isAimed) tracks.position = withoutKeysOf(std::move(tracks.position), *replaced);
    if (replaced) handOver(tracks.position, *replaced, ownsPositionKeys(key) ? std::optional(key.id) : std::nullopt);
    if (isAimed) tracks.position = aimedFresh(tracks, *indexOf(tracks.zoom, key.id), *zoom.aim, timelineEnd, ids);
    return Insertion{std::move(tracks), key.id, replaced};
}

namespace {

/// A ramp's new times, where the change asks for any.
Result<Ramp, Refusal> changedRamp(const std::vector<ZoomKeyframe>& zooms, const ZoomKeyframe& zoom,
                                  const ZoomChange& change, EditTime timelineEnd) {
    const Ramp old{zoom.startTime, zoom.transitionTime};
    const bool moves = change.start && !isWithin(*change.start, Seconds(kTolerance), old.start);
    const bool resizes = change.transition && std::abs((*change.transition - old.transition).value) > kTolerance;
    if (!moves && !resizes) return old;
    if (isOpening(zoom)) return failure(Refusal{Reason::StartZoomIsFixed});
    const auto start = insideTimeline(change.start.value_or(old.start), timelineEnd);
    if (!start) return failure(start.error());
    const Seconds transition = resizes ? possibleTransition(*change.transition, timelineEnd) : old.transition;
    return fitted(zooms, {*start, transition}, zoom.id);
}

/// The keys that a ramp owns follow it to its new times, no further than its hold; the key where it ended goes to where
/// it ends now. One that would come before the track's first key goes.
std::vector<PositionKeyframe> following(std::vector<PositionKeyframe> positions, const ZoomKeyframe& old,
                                        const ZoomKeyframe& zoom, const Hold& hold) {
    std::vector<PositionKeyframe> staying;
    std::vector<PositionKeyframe> coming;
    for (PositionKeyframe& key : positions) {
        if (staying.empty() || !isOwnedBy(key, zoom.id)) {
            staying.push_back(std::move(key));
            continue;
        }
        const EditTime carried = key.time + (zoom.startTime - old.startTime);
        key.time = isWithin(key.time, kOnTime, rampEnd(old)) ? hold.from : std::min(carried, hold.to);
        if (key.time > staying.front().time) coming.push_back(std::move(key));
    }
    return joined(std::move(staying), std::move(coming));
}

} // namespace

Result<ZoomTracks, Refusal> updateZoom(ZoomTracks tracks, const UUID& id, const ZoomChange& change,
                                       EditTime timelineEnd, IdSource& ids) {
    sortRamps(tracks.zoom);
    std::ranges::stable_sort(tracks.position, {}, &PositionKeyframe::time);
    const auto index = indexOf(tracks.zoom, id);
    if (!index) return failure(Refusal{Reason::UnknownZoom});
    if (change.factor)
        if (const auto refusal = factorRefusal(*change.factor)) return failure(*refusal);
    const ZoomKeyframe old = tracks.zoom[*index];
    const auto ramp = changedRamp(tracks.zoom, old, change, timelineEnd);
    if (!ramp) return failure(ramp.error());

    ZoomKeyframe zoom = old;
    zoom.startTime = ramp->start;
    zoom.transitionTime = ramp->transition;
    zoom.zoomFactor = change.factor.value_or(old.zoomFactor);
    zoom.transitionType = change.curve.value_or(old.transitionType);
    zoom.isManual = true;
    tracks.zoom[*index] = zoom;
    sortRamps(tracks.zoom);

    const std::size_t place = *indexOf(tracks.zoom, id);
    if (zoom.startTime != old.startTime || zoom.transitionTime != old.transitionTime) {
        if (zoom.startTime < old.startTime && place > 0)
            tracks.position = withHoldEndMoved(std::move(tracks.position), tracks.zoom[place - 1].id, old.startTime,
                                               zoom.startTime);
        tracks.position = following(std::move(tracks.position), old, zoom, holdOf(tracks.zoom, place, timelineEnd));
    }
    if (!ownsPositionKeys(zoom)) handOver(tracks.position, id, std::nullopt);
    if (change.aim && ownsPositionKeys(zoom))
        tracks.position = aimed(std::move(tracks.position), zoom, *change.aim, ids);
    return tracks;
}

Result<ZoomTracks, Refusal> removeZoom(ZoomTracks tracks, const UUID& id, EditTime timelineEnd) {
    sortRamps(tracks.zoom);
    const auto index = indexOf(tracks.zoom, id);
    if (!index) return failure(Refusal{Reason::UnknownZoom});
    if (*index == 0) return failure(Refusal{Reason::FirstZoomCannotBeDeleted});

    const EditTime oldEnd = tracks.zoom[*index].startTime;
    tracks.zoom.erase(tracks.zoom.begin() + static_cast<std::ptrdiff_t>(*index));
    ZoomKeyframe& before = tracks.zoom[*index - 1];
    before.isManual = true; // it holds longer now: a rebuild would bring the removed ramp back
    const Hold hold = holdOf(tracks.zoom, *index - 1, timelineEnd);
    tracks.position = withHoldEndMoved(withoutKeysOf(std::move(tracks.position), id), before.id, oldEnd, hold.to);
    return tracks;
}

ZoomTracks withoutZooms(ZoomTracks tracks, IdSource& ids) {
    tracks.zoom = {ZoomKeyframe::baseline(ids)};
    std::ranges::stable_sort(tracks.position, {}, &PositionKeyframe::time);
    if (tracks.position.empty()) tracks.position.push_back(PositionKeyframe::baseline(ids));
    tracks.position.front().zoomKeyframeID.reset();
    std::erase_if(tracks.position, [](const auto& key) { return key.zoomKeyframeID.has_value(); });
    return tracks;
}

} // namespace morvelin::ZoomTrackEdits
