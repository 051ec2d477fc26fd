// How position keys go through a change of the fragments. `retimed` of TrackRetiming.h is the whole.
#pragma once

#include <vector>

#include "core/Keyframes.h"
#include "timeline/TimeWarp.h"

namespace morvelin {

/// Sorted by `time`. Of the keys in cut footage the first holds the view up to the seam and the last sets it behind.
[[nodiscard]] std::vector<PositionKeyframe> retimedPositions(std::vector<PositionKeyframe> positions,
                                                             const TimeWarp& warp);

/// A key whose ramp is gone goes to the zoom-in that is in force at its time, or else goes too. The first key stays.
[[nodiscard]] std::vector<PositionKeyframe> withoutOrphans(std::vector<PositionKeyframe> positions,
                                                           const std::vector<ZoomKeyframe>& zooms);

} // namespace morvelin
