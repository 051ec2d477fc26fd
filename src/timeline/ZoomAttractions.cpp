#include "timeline/ZoomAttractions.h"

#include "timeline/ClickPings.h"
#include "timeline/FragmentMap.h"

namespace morvelin {

namespace {

/// A gesture attracts an automatic zoom just as a click does.
template <class Detection, class TimeMapping>
void addClicks(std::vector<ClickPing>& clicks, const std::vector<Detection>& detections, TimeMapping&& editTime) {
    for (const Detection& detection : detections)
        if (const std::optional<EditTime> time = editTime(detection.startTime))
            clicks.push_back({*time, detection.center.x, detection.center.y, MouseButton::Left, 1});
}

template <class TimeMapping>
std::vector<ClickPing> withGestures(std::vector<ClickPing> clicks, const PointerGestures& gestures,
                                    TimeMapping&& editTime) {
    addClicks(clicks, gestures.focuses, editTime);
    addClicks(clicks, gestures.tapTaps, editTime);
    return clicks;
}

} // namespace

PointerGestures PointerGestures::of(std::span<const CursorEvent> events) {
    const PointerTrack track = PointerTrack::of(events);
    return {FocusDetector().detect(track), TapTapDetector().detect(track)};
}

std::vector<ClickPing> zoomAttractions(std::span<const CursorEvent> events, const PointerGestures& gestures) {
    return withGestures(clickPings(events), gestures, [](SourceTime s) { return std::optional(uncutEditTime(s)); });
}

std::vector<ClickPing> zoomAttractions(std::span<const CursorEvent> events, const PointerGestures& gestures,
                                       const FragmentMap& fragments) {
    return withGestures(clickPings(events, fragments), gestures, [&](SourceTime s) { return fragments.editTime(s); });
}

} // namespace morvelin
