// The position keys that belong to a zoom: the pair that holds its view still, and where the zoom is aimed.
#pragma once

#include "timeline/ZoomTrackEdits.h"

namespace morvelin::ZoomTrackEdits {

/// Where a zoom's level holds: from the end of its ramp to the start of the next one, or to the timeline's end.
struct Hold {
    EditTime from, to;

    [[nodiscard]] Seconds length() const { return to - from; }
    [[nodiscard]] EditTime middle() const { return from + length() / 2; }
};

/// Of the zoom at `index` in a sorted track; never of negative length.
[[nodiscard]] Hold holdOf(const std::vector<ZoomKeyframe>& zooms, std::size_t index, EditTime timelineEnd);

/// Puts the zoom's keys in order: the target in the middle of its hold stays, and a fresh pair at it takes the place of
/// all keys from the ramp's start to the hold's end, and of all others that the zoom owns. A key on the ramp's very
/// start, which ends the hold before, and the track's first key stay. Where the two would come closer than 0.05 s, one
/// is made; where the first key lies that near, it becomes the one. Refuses `UnknownZoom`,
/// `PullBackOwnsNoPositionKeys` and `NoHold`.
[[nodiscard]] Result<std::vector<PositionKeyframe>, Refusal> rebuildPositionKeys(
    const UUID& id, std::vector<ZoomKeyframe> zooms, std::vector<PositionKeyframe> positions, EditTime timelineEnd,
    IdSource& ids);

/// The pair of `rebuildPositionKeys`, aimed at `target`.
[[nodiscard]] std::vector<PositionKeyframe> withPair(std::vector<PositionKeyframe> positions, const ZoomKeyframe& zoom,
                                                     EditTime holdEnd, NormalizedPoint target, IdSource& ids);

/// Aims every key that the zoom owns. Where it owns none, one where its ramp ends: fresh, or the key that stands there.
[[nodiscard]] std::vector<PositionKeyframe> aimed(std::vector<PositionKeyframe> positions, const ZoomKeyframe& zoom,
                                                  NormalizedPoint target, IdSource& ids);

/// Leaves out the keys of a ramp that goes; the track's first key is freed instead.
[[nodiscard]] std::vector<PositionKeyframe> withoutKeysOf(std::vector<PositionKeyframe> positions, const UUID& zoom);

/// The keys that end the hold of `zoom` at `from` end it at `to`, but for the track's first.
[[nodiscard]] std::vector<PositionKeyframe> withHoldEndMoved(std::vector<PositionKeyframe> positions, const UUID& zoom,
                                                             EditTime from, EditTime to);

} // namespace morvelin::ZoomTrackEdits
