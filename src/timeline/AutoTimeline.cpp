#include "timeline/AutoTimeline.h"

#include <algorithm>

#include "timeline/FragmentMap.h"
#include "timeline/TrackLimits.h"
#include "timeline/ZoomAttractions.h"

namespace morvelin {

namespace {

bool isHandEdit(const ZoomKeyframe& zoom) {
    const bool isBaseline = isOpening(zoom) && zoom.zoomFactor == 1;
    return zoom.isManual && !isBaseline;
}

/// The generator's keys belong to ramps; a key that is moved or re-aimed by hand is freed.
bool isHandEdit(const PositionKeyframe& key) {
    const bool isBaseline = atMost(key.time, EditTime()) && key.targetX == 0.5 && key.targetY == 0.5;
    return !key.zoomKeyframeID && !key.isEphemeral && !isBaseline;
}

} // namespace

bool hasHandEdits(const ZoomTracks& tracks) {
    return std::ranges::any_of(tracks.zoom, [](const auto& zoom) { return isHandEdit(zoom); }) ||
           std::ranges::any_of(tracks.position, [](const auto& key) { return isHandEdit(key); });
}

ZoomTracks rebuiltZoomTracks(std::span<const CursorEvent> events, const std::vector<VideoFragment>& fragments,
                             const EditingSettings& settings, IdSource& ids) {
    const FragmentMap map(fragments);
    return ZoomEngine().generateKeyframes(zoomAttractions(events, PointerGestures::of(events), map), settings,
                                          map.duration(), ids);
}

} // namespace morvelin
