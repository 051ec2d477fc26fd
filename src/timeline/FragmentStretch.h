// Dragging a fragment's edge: inwards removes footage, outwards brings back footage that was cut away beside it.
#pragma once

#include "timeline/SpanEdits.h"

namespace morvelin {

enum class FragmentStretchSide { Left, Right };

/// What the timeline shows while an edge is dragged. The tracks stay as they were until the drag ends, so zoom and
/// position are read at one moment: the picture doesn't jump.
struct StretchPreviewState {
    UUID fragmentID;
    FragmentStretchSide side = FragmentStretchSide::Left;
    EditTime oldBoundaryTime;
    EditTime newBoundaryTime;
    EditTime frozenTransformTime; ///< where the camera is read: at the edge as it was
    bool isRemoval = false;       ///< footage goes; otherwise it comes back
    Seconds deltaSeconds;         ///< of the timeline that go or come back

    bool operator==(const StretchPreviewState&) const = default;
};

/// The drag of an edge to `to`, which goes no further than `stretchFragment` does.
[[nodiscard]] Result<StretchPreviewState, SpanRefusal> stretchPreview(const std::vector<VideoFragment>& fragments,
                                                                      const UUID& fragment, FragmentStretchSide side,
                                                                      EditTime to, Seconds recordingLength);

/// Moves an edge of the fragment from where it lies on the timeline to `to`. It stops where 0.05 s of the fragment are
/// left on either clock, at the recording's ends, and at footage that another fragment shows. Refuses an unknown
/// fragment alone.
[[nodiscard]] Result<SpanEdit, SpanRefusal> stretchFragment(const TimelineTracks& tracks, const UUID& fragment,
                                                            FragmentStretchSide side, EditTime to,
                                                            Seconds recordingLength);

} // namespace morvelin
