// The least lengths and distances that track editing keeps, and what they say about single keys.
#pragma once

#include <cmath>

#include "core/Keyframes.h"
#include "timeline/Tolerance.h"

namespace morvelin {

/// A piece of a fragment is longer than this on both clocks.
inline constexpr Seconds kLeastPiece{0.05};
inline constexpr Seconds kLeastRamp{0.05};
inline constexpr Seconds kLeastKeyGap{0.05};

/// Zoom times that differ by less are the same.
inline constexpr Seconds kSameZoomTime{1e-6};
/// So near, a position key sits on a time.
inline constexpr Seconds kOnTime{1e-4};
/// Clients see times rounded to a thousandth, so one that hands a time back may miss it by this.
inline constexpr Seconds kRoundedTime{0.0005 + kTolerance};

/// A zoom to this factor or below frames the whole capture and owns no position keys.
inline constexpr double kFramesWhole = 1.000000001;

constexpr bool ownsPositionKeys(const ZoomKeyframe& zoom) { return zoom.zoomFactor > kFramesWhole; }

constexpr EditTime rampEnd(const ZoomKeyframe& zoom) { return zoom.startTime + zoom.transitionTime; }

/// The key at 0 without a ramp, which sets the level that the video opens on.
constexpr bool isOpening(const ZoomKeyframe& zoom) {
    return zoom.startTime.value < kTolerance && zoom.transitionTime.value < kTolerance;
}

/// Both ends included.
inline bool isWithin(EditTime t, Seconds distance, EditTime other) {
    return atMost(std::abs((t - other).value), distance.value);
}

/// Whether two position keys at these times would be too close; exactly 0.05 s apart is far enough.
inline bool areTooClose(EditTime t, EditTime other) {
    return !atLeast(std::abs((t - other).value), kLeastKeyGap.value);
}

constexpr bool isOwnedBy(const PositionKeyframe& key, const UUID& zoom) { return key.zoomKeyframeID == zoom; }

/// A key aimed at `target`, its centre not yet fitted to the zoom.
inline PositionKeyframe aimedKey(UUID id, EditTime time, NormalizedPoint target, std::optional<UUID> owner) {
    return {id, time, target.x, target.y, target.x, target.y, owner, false};
}

} // namespace morvelin
