#include "timeline/ZoomPlaces.h"

#include <algorithm>

#include "timeline/TrackLimits.h"
#include "timeline/ZoomTrack.h"

namespace morvelin::ZoomTrackEdits {

namespace {

/// A zoom counts as 1 within this.
constexpr double kCountsAsWhole = 0.02;

bool isInsideRamp(const ZoomKeyframe& zoom, EditTime t) {
    return t > zoom.startTime + kSameZoomTime && t < rampEnd(zoom) - kSameZoomTime;
}

Proposal proposalAt(EditTime start, EditTime end, Seconds hold, Seconds ramp) {
    const EditTime holdEnd = start + ramp + hold;
    const bool zoomsOut = holdEnd + ramp <= end + kSameZoomTime;
    return zoomsOut ? Proposal{start, holdEnd, holdEnd + ramp, true} : Proposal{start, end, end, false};
}

} // namespace

EditTime nextZoomStart(std::vector<ZoomKeyframe> zooms, const UUID& id, EditTime fallback) {
    sortRamps(zooms);
    const auto zoom = std::ranges::find(zooms, id, &ZoomKeyframe::id);
    return zoom != zooms.end() && std::next(zoom) != zooms.end() ? std::next(zoom)->startTime : fallback;
}

FreeSpan freeSpan(std::vector<ZoomKeyframe> zooms, EditTime time, std::optional<UUID> except) {
    sortRamps(zooms);
    FreeSpan span;
    for (const ZoomKeyframe& zoom : zooms) {
        if (zoom.id == except) continue;
        if (zoom.startTime > time + kSameZoomTime) {
            span.until = zoom.startTime;
            break;
        }
        span.from = std::max(span.from, rampEnd(zoom));
    }
    return span;
}

std::optional<Proposal> proposeZoom(std::vector<ZoomKeyframe> zooms, EditTime time, EditTime timelineEnd, Seconds hold,
                                    Seconds ramp) {
    sortRamps(zooms);
    if (std::ranges::any_of(zooms, [&](const auto& zoom) { return isInsideRamp(zoom, time); })) return std::nullopt;

    const auto next = std::ranges::upper_bound(zooms, time + kSameZoomTime, {}, &ZoomKeyframe::startTime);
    EditTime earliest;
    if (next != zooms.begin()) {
        const ZoomKeyframe& current = *std::prev(next);
        if (!atMost(std::abs(current.zoomFactor - 1), kCountsAsWhole)) return std::nullopt;
        earliest = std::max(earliest, rampEnd(current));
    }
    const EditTime end = next != zooms.end() ? next->startTime : timelineEnd;

    const EditTime wished = std::max(earliest, time);
    EditTime latest = end - ramp - std::max(ramp, hold);
    if (latest < earliest - kSameZoomTime) latest = end - ramp;
    const EditTime start = wished <= latest + kSameZoomTime ? wished : latest;
    if (start < earliest - kSameZoomTime) return std::nullopt;
    return proposalAt(std::max(start, earliest), end, hold, ramp);
}

} // namespace morvelin::ZoomTrackEdits
