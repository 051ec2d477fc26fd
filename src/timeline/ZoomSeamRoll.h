// Moving the boundary between two neighbouring zooms.
#pragma once

#include "timeline/ZoomTrackEdits.h"

namespace morvelin::ZoomTrackEdits {

/// The least hold of a zoom during a roll.
inline constexpr Seconds kLeastHold{0.1};

struct SeamRoll {
    std::vector<ZoomKeyframe> zooms; ///< the whole track, sorted
    std::vector<PositionKeyframe> positions;
    EditTime seam;                  ///< where the boundary landed
    std::optional<UUID> nextID;     ///< the zoom that now starts there
    UUID previousID;                ///< the zoom that now ends there
    std::vector<UUID> absorbed;     ///< zooms merged away, in the order they were crossed
    std::optional<UUID> survivorID; ///< the zoom that remains of a merge
};

/// Moves the start of zoom `id` to `to`: the zoom before it and this one change their lengths, and the position keys
/// pinned to the boundary and to the end of the ramp follow. The boundary stops against a ramp. Carried past a whole
/// zoom (its ramp, and its hold or `minimumHold` where that is longer), it merges that zoom away: backwards into `id`,
/// forwards (`id` itself, and then those after it) into the zoom before. What remains of a merge is given a fresh pair
/// of keys at the target in the middle of its old hold. The track's first zoom is never merged away.
/// Refuses `UnknownZoom`, `NoSeamBeforeFirstZoom` and `NoRoomForSeam`.
[[nodiscard]] Result<SeamRoll, Refusal> rollSeam(std::vector<ZoomKeyframe> zooms,
                                                 std::vector<PositionKeyframe> positions, const UUID& id, EditTime to,
                                                 Seconds minimumHold, EditTime timelineEnd, IdSource& ids);

} // namespace morvelin::ZoomTrackEdits
