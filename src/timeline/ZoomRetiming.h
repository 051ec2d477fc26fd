// How zoom ramps go through a change of the fragments. `retimed` of TrackRetiming.h is the whole.
#pragma once

#include <vector>

#include "core/Keyframes.h"
#include "timeline/TimeWarp.h"

namespace morvelin {

/// Sorted by `startTime`.
[[nodiscard]] std::vector<ZoomKeyframe> retimedZooms(std::vector<ZoomKeyframe> zooms, const TimeWarp& warp);

} // namespace morvelin
