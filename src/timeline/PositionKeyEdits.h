// Edits of single position keys by a person or an agent.
#pragma once

#include <optional>
#include <vector>

#include "core/Keyframes.h"
#include "core/base/Result.h"
#include "timeline/ZoomEngine.h"

namespace morvelin::PositionKeyEdits {

/// Why the position track was left as it was; the caller words it.
struct Refusal {
    enum class Reason {
        UnknownKey,
        TooClose,        ///< another key lies closer than 0.05 s to `time`
        FirstKeyIsFixed, ///< it anchors the track: it can be re-aimed, but neither moved nor removed
        OutsideTimeline, ///< `time` lies before 0 or past the timeline's end
    };

    Reason reason;
    EditTime time{};
};

struct Addition {
    std::vector<PositionKeyframe> positions;
    UUID id;
};

/// A free key. Results are in time order; centres want a refit (`refitPositionKeys`) after each of these edits.
[[nodiscard]] Result<Addition, Refusal> addKey(std::vector<PositionKeyframe> positions, EditTime time,
                                               NormalizedPoint target, EditTime timelineEnd, IdSource& ids);

/// What is absent keeps its value.
struct KeyChange {
    std::optional<EditTime> time;
    std::optional<double> x;
    std::optional<double> y;
};

/// A key that is moved or re-aimed stops following its ramp; a change to what it is already changes nothing.
[[nodiscard]] Result<std::vector<PositionKeyframe>, Refusal> updateKey(std::vector<PositionKeyframe> positions,
                                                                       const UUID& id, const KeyChange& change,
                                                                       EditTime timelineEnd);

/// The ramp that owned the key counts as edited by hand from then on: a rebuild would bring the key back.
[[nodiscard]] Result<ZoomTracks, Refusal> removeKey(ZoomTracks tracks, const UUID& id);

} // namespace morvelin::PositionKeyEdits
