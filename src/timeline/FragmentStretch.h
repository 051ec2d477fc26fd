// Dragging a fragment's edge: inwards removes footage, outwards brings back footage that was cut away beside it.
#pragma once

#include "timeline/SpanEdits.h"

namespace morvelin {

enum class FragmentStretchSide { Left, Right };

/// Moves an edge of the fragment from where it lies on the timeline to `to`. It stops where 0.05 s of the fragment are
/// left on either clock, at the recording's ends, and at footage that another fragment shows. Refuses an unknown
/// fragment alone.
[[nodiscard]] Result<SpanEdit, SpanRefusal> stretchFragment(const TimelineTracks& tracks, const UUID& fragment,
                                                            FragmentStretchSide side, EditTime to,
                                                            Seconds recordingLength);

} // namespace morvelin
