// Where the zoom track has room: the questions that every edit of it begins with.
#pragma once

#include <optional>
#include <vector>

#include "core/Keyframes.h"

namespace morvelin::ZoomTrackEdits {

/// No ramp runs in it.
struct FreeSpan {
    EditTime from;
    std::optional<EditTime> until; ///< the start of the next ramp, if there is one
};

/// A place for a new zoom.
struct Proposal {
    EditTime start;
    EditTime holdEnd;
    EditTime end;  ///< of the ramp back out, or of the hold where there is none
    bool zoomsOut; ///< whether a ramp back out fits before the next zoom
};

/// The start of the zoom after `id`, or `fallback` (normally the timeline's end) when it is the last or unknown.
[[nodiscard]] EditTime nextZoomStart(std::vector<ZoomKeyframe> zooms, const UUID& id, EditTime fallback);

/// The span without ramps around a time; for a time inside a ramp, the one that follows the ramp. `except` is a zoom
/// that doesn't count.
[[nodiscard]] FreeSpan freeSpan(std::vector<ZoomKeyframe> zooms, EditTime time, std::optional<UUID> except = {});

/// A place at or near `time` for a zoom that ramps for `ramp` and holds for at least `hold`, both kept clear of the
/// next zoom where the span allows it. Nothing inside a ramp or inside another zoom.
[[nodiscard]] std::optional<Proposal> proposeZoom(std::vector<ZoomKeyframe> zooms, EditTime time, EditTime timelineEnd,
                                                  Seconds hold, Seconds ramp);

} // namespace morvelin::ZoomTrackEdits
