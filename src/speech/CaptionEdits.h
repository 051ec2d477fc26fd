// How a person edits captions. Each edit tells whether anything changed; what its bounds refuse changes nothing.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "core/Captions.h"

namespace morvelin::CaptionEdits {

/// The shortest that an edit makes a line.
inline constexpr Seconds kShortestCue = 0.12_s;

/// The first cue that is shown at the moment, both of its ends included. `track` owns the result.
[[nodiscard]] const CaptionCue* cueAt(const CaptionTrack& track, SourceTime time);
[[nodiscard]] const CaptionCue* cueByID(const CaptionTrack& track, const UUID& id);

/// What the handles of a cue snap to: the ends of every other cue, and of every word. Sorted, each once.
[[nodiscard]] std::vector<SourceTime> snapTimes(const CaptionTrack& track, const UUID& excluding);

/// Moves a cue's ends, within its neighbours and the recording's `duration`. Its words stay as they are.
[[nodiscard]] bool retime(CaptionTrack& track, const UUID& id, SourceTime start, SourceTime end, Seconds duration);

/// Sets the text, trimmed, and fits the words to it: the same number keeps all timings, any other shares the cue's
/// span equally, in thousandths of a second.
[[nodiscard]] bool setText(CaptionTrack& track, const UUID& id, std::string_view text);

/// Adds an empty cue of up to 2 s; gives its id.
[[nodiscard]] std::optional<UUID> addCue(CaptionTrack& track, SourceTime time, Seconds duration, IdSource& ids);

/// Cuts a cue in two; gives the id of the right one, which comes right after the left.
[[nodiscard]] std::optional<UUID> split(CaptionTrack& track, const UUID& id, SourceTime time, IdSource& ids);

/// Joins a cue with the next one.
[[nodiscard]] bool merge(CaptionTrack& track, const UUID& id);

[[nodiscard]] bool remove(CaptionTrack& track, const UUID& id);

} // namespace morvelin::CaptionEdits
