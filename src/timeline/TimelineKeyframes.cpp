#include "timeline/TimelineKeyframes.h"

#include <algorithm>

#include "timeline/ZoomAttractions.h"
#include "timeline/ZoomEngine.h"

namespace morvelin {

namespace {

TimelineKeyframes generate(std::span<const CursorEvent> events, Seconds duration, const EditingSettings& settings,
                           IdSource& ids) {
    TimelineKeyframes made;
    if (events.empty()) return made;

    const PointerGestures gestures = PointerGestures::of(events);
    for (const auto& detection : gestures.focuses) made.focuses.push_back(focusKeyframe(detection, duration, ids));
    for (const auto& detection : gestures.tapTaps) made.tapTaps.push_back(tapTapKeyframe(detection, duration, ids));
    ZoomTracks tracks = ZoomEngine().generateKeyframes(zoomAttractions(events, gestures), settings, duration, ids);
    made.zoom = std::move(tracks.zoom);
    made.position = std::move(tracks.position);
    return made;
}

/// The list that was there before, if it holds anything.
template <class Key>
void prefer(std::vector<Key>& made, std::vector<Key>&& existing) {
    if (!existing.empty()) made = std::move(existing);
}

template <class Key>
void limitEnds(std::vector<Key>& keys, Seconds duration) {
    if (!(duration > 0_s)) return;
    for (Key& key : keys) key.endTime = std::min(key.endTime, EditTime(duration));
}

} // namespace

TimelineKeyframes timelineKeyframes(TimelineKeyframeSource source, TimelineKeyframes existing,
                                    std::span<const CursorEvent> events, Seconds duration,
                                    const EditingSettings& settings, IdSource& ids) {
    if (source == TimelineKeyframeSource::PreserveProject) return existing;

    TimelineKeyframes timeline = generate(events, duration, settings, ids);
    prefer(timeline.zoom, std::move(existing.zoom));
    prefer(timeline.position, std::move(existing.position));
    prefer(timeline.focuses, std::move(existing.focuses));
    prefer(timeline.tapTaps, std::move(existing.tapTaps));
    limitEnds(timeline.focuses, duration);
    limitEnds(timeline.tapTaps, duration);
    return timeline;
}

TimelineKeyframes withBaselineKeys(TimelineKeyframes timeline, IdSource& ids) {
    if (timeline.zoom.empty()) timeline.zoom.push_back(ZoomKeyframe::baseline(ids));
    if (timeline.position.empty()) timeline.position.push_back(PositionKeyframe::baseline(ids));
    return timeline;
}

} // namespace morvelin
