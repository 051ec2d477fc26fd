// Which clicks share one zoom, and when the camera sets out for each such group. Used by `ZoomEngine`.
#pragma once

#include <span>
#include <vector>

#include "timeline/ZoomEngine.h"

namespace morvelin {

/// The generator's times, with their floors applied.
struct RampTiming {
    Seconds anticipation; ///< the zoom is settled this long before a click
    Seconds lead;         ///< from a ramp's start to the click, where there is room
    Seconds rampOut;
    Seconds idle;
    Seconds minRamp; ///< a ramp shorter than this would be a jerk

    explicit RampTiming(const EditingSettings& settings);
};

/// Clicks that one zoom-in covers: neighbours in the sorted list of all clicks, never empty.
struct ClickGroup {
    std::span<const ClickPing> clicks;
    ZoomEngine::RampPlan plan;

    [[nodiscard]] EditTime first() const { return clicks.front().time; }
    [[nodiscard]] EditTime last() const { return clicks.back().time; }
    /// A group without room for a ramp makes no keys.
    [[nodiscard]] bool hasRamp() const;
};

/// The final groups, in order, of clicks sorted by time; they view `clicks`. O(n).
[[nodiscard]] std::vector<ClickGroup> clickGroups(std::span<const ClickPing> clicks, const RampTiming& timing);

} // namespace morvelin
