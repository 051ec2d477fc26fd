// The automatic timeline of a take: zooms, positions, focus ovals and tap-tap hands from its pointer track.
#pragma once

#include <span>
#include <vector>

#include "core/CursorEvent.h"
#include "core/Keyframes.h"
#include "core/Style.h"

namespace morvelin {

/// What a recording's first version starts from.
struct TimelineKeyframes {
    std::vector<ZoomKeyframe> zoom;
    std::vector<PositionKeyframe> position;
    std::vector<FocusKeyframe> focuses;
    std::vector<TapTapKeyframe> tapTaps;

    bool operator==(const TimelineKeyframes&) const = default;
};

enum class TimelineKeyframeSource { GenerateFromCursorEvents, PreserveProject };

/// The timeline of an uncut take. Of the `existing` lists each that is not empty stays (a take's live focus ovals, for
/// one); whoever wants all made anew passes none. Without events nothing is generated. A `duration` not above 0 is
/// unknown; a known one limits the ends of ovals and hands.
[[nodiscard]] TimelineKeyframes timelineKeyframes(TimelineKeyframeSource source, TimelineKeyframes existing,
                                                  std::span<const CursorEvent> events, Seconds duration,
                                                  const EditingSettings& settings, IdSource& ids);

/// Gives an empty zoom or position track its baseline key.
[[nodiscard]] TimelineKeyframes withBaselineKeys(TimelineKeyframes timeline, IdSource& ids);

} // namespace morvelin
