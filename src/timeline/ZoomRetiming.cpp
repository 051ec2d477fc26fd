#include "timeline/ZoomRetiming.h"

#include <algorithm>
#include <utility>

#include "timeline/TrackLimits.h"
#include "timeline/ZoomTrack.h"

namespace morvelin {

namespace {

constexpr double kSameFactor = 1e-6;

/// A ramp on its way through the change.
struct Travelling {
    ZoomKeyframe old;
    ZoomKeyframe now;
    bool beganInCut = false;
    bool arrivedInCut = false; ///< its level was reached before the footage goes on
};

Travelling carried(const ZoomKeyframe& old, const TimeWarp& warp) {
    Travelling ramp{old, old, warp.isRemoved(old.startTime), false};
    if (isOpening(old)) {
        ramp.arrivedInCut = ramp.beganInCut;
        return ramp;
    }
    ramp.now.startTime = warp.at(old.startTime);
    ramp.arrivedInCut = ramp.beganInCut && atMost(warp.endAt(rampEnd(old)), ramp.now.startTime);
    if (!atMost(rampEnd(old), warp.changesFrom())) {
        const Seconds least = std::min(old.transitionTime, kLeastRamp);
        ramp.now.transitionTime = std::max(warp.endAt(rampEnd(old)) - ramp.now.startTime, least);
    }
    return ramp;
}

bool isZoomOutOfNothing(const Travelling& ramp, const Travelling& before) {
    return !ownsPositionKeys(ramp.now) && atMost(std::abs(ramp.now.zoomFactor - before.now.zoomFactor), kSameFactor);
}

void becomeOpening(ZoomKeyframe& key) {
    key.startTime = EditTime();
    key.transitionTime = 0_s;
}

/// Adds what the footage after the seam needs of the ramps that began in the cut, in order.
void crossSeam(std::vector<Travelling>& kept, std::vector<Travelling> inCut, const TimeWarp& warp) {
    if (inCut.empty()) return;
    Travelling& last = inCut.back();
    if (!kept.empty()) {
        const bool isSeen = !atLeast(last.now.startTime, warp.newEnd());
        if (isSeen && !isZoomOutOfNothing(last, kept.back())) kept.push_back(std::move(last));
        return;
    }
    // The front goes: the level that the picture was at is what the video opens on.
    const std::size_t opening = last.arrivedInCut ? inCut.size() : inCut.size() - 1;
    if (opening > 0) {
        becomeOpening(inCut[opening - 1].now);
        kept.push_back(inCut[opening - 1]);
    }
    if (!last.arrivedInCut) kept.push_back(std::move(last));
}

/// Where the change leaves two ramps too little room, the earlier one gives way to `next`.
bool fitsBefore(Travelling& ramp, const Travelling& next) {
    const Seconds gap = next.now.startTime - ramp.now.startTime;
    const Seconds oldGap = next.old.startTime - ramp.old.startTime;
    if (isOpening(ramp.now) || atLeast(gap, oldGap)) return true;
    if (!atLeast(gap, std::min(oldGap, kLeastRamp))) return false;
    ramp.now.transitionTime = std::min(ramp.now.transitionTime, gap);
    return true;
}

} // namespace

std::vector<ZoomKeyframe> retimedZooms(std::vector<ZoomKeyframe> zooms, const TimeWarp& warp) {
    sortRamps(zooms);
    std::vector<Travelling> kept;
    std::vector<Travelling> inCut;
    for (const ZoomKeyframe& zoom : zooms) {
        Travelling ramp = carried(zoom, warp);
        if (ramp.beganInCut) {
            inCut.push_back(std::move(ramp));
            continue;
        }
        crossSeam(kept, std::exchange(inCut, {}), warp);
        kept.push_back(std::move(ramp));
    }
    crossSeam(kept, std::move(inCut), warp);

    std::vector<Travelling> fitting; // from the last one back
    for (auto ramp = kept.rbegin(); ramp != kept.rend(); ++ramp)
        if (fitting.empty() || fitsBefore(*ramp, fitting.back())) fitting.push_back(std::move(*ramp));

    std::vector<ZoomKeyframe> result;
    result.reserve(fitting.size());
    for (auto ramp = fitting.rbegin(); ramp != fitting.rend(); ++ramp) result.push_back(std::move(ramp->now));
    return result;
}

} // namespace morvelin
