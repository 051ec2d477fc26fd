#include "timeline/TrackRetiming.h"

#include "timeline/PositionRetiming.h"
#include "timeline/Tolerance.h"
#include "timeline/ZoomRetiming.h"

namespace morvelin {

namespace {

enum class OverBroughtBackFootage { StayAside, Grow };

template <class Cue>
std::vector<Cue> retimedCues(std::vector<Cue> cues, const TimeWarp& warp, OverBroughtBackFootage over) {
    const bool grows = over == OverBroughtBackFootage::Grow;
    std::vector<Cue> kept;
    kept.reserve(cues.size());
    for (Cue& cue : cues) {
        const bool beganInCut = warp.isRemoved(cue.startTime);
        const EditTime start = grows ? warp.endAt(cue.startTime) : warp.at(cue.startTime);
        const EditTime end = grows ? warp.at(cue.endTime) : warp.endAt(cue.endTime);
        if (beganInCut && atMost(end, start)) continue;
        cue.startTime = start;
        cue.endTime = std::max(start, end);
        kept.push_back(std::move(cue));
    }
    return kept;
}

} // namespace

std::vector<MaskKeyframe> retimed(std::vector<MaskKeyframe> masks, const TimeWarp& warp) {
    return retimedCues(std::move(masks), warp, OverBroughtBackFootage::Grow);
}

std::vector<FocusKeyframe> retimed(std::vector<FocusKeyframe> focuses, const TimeWarp& warp) {
    return retimedCues(std::move(focuses), warp, OverBroughtBackFootage::StayAside);
}

std::vector<TapTapKeyframe> retimed(std::vector<TapTapKeyframe> tapTaps, const TimeWarp& warp) {
    return retimedCues(std::move(tapTaps), warp, OverBroughtBackFootage::StayAside);
}

ZoomTracks retimed(ZoomTracks camera, const TimeWarp& warp) {
    camera.zoom = retimedZooms(std::move(camera.zoom), warp);
    camera.position = withoutOrphans(retimedPositions(std::move(camera.position), warp), camera.zoom);
    return camera;
}

void retime(TimelineTracks& tracks, const TimeWarp& warp) {
    tracks.camera = retimed(std::move(tracks.camera), warp);
    tracks.masks = retimed(std::move(tracks.masks), warp);
    tracks.focuses = retimed(std::move(tracks.focuses), warp);
    tracks.tapTaps = retimed(std::move(tracks.tapTaps), warp);
}

} // namespace morvelin
