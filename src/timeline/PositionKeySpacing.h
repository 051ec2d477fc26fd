// Keeps position keys at least 0.05 s apart where an edit brings keys to new times.
#pragma once

#include <vector>

#include "core/Keyframes.h"

namespace morvelin {

/// Both lists in time order. Of `coming`, in its order, each key closer than 0.05 s to one that is there is left out.
[[nodiscard]] std::vector<PositionKeyframe> joined(std::vector<PositionKeyframe> staying,
                                                   std::vector<PositionKeyframe> coming);

/// The key nearest to `time` among those closer than 0.05 s; null without one. `positions` in time order.
[[nodiscard]] PositionKeyframe* keyTooCloseTo(std::vector<PositionKeyframe>& positions, EditTime time);

} // namespace morvelin
