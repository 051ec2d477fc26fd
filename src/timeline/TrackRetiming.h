// Carries what is keyed to the timeline through a change of the fragments, so that every cue stays on what it showed.
#pragma once

#include "timeline/TimeWarp.h"
#include "timeline/TimelineTracks.h"

namespace morvelin {

/// Masks, ovals and hands keep to their footage; what lies in cut footage alone goes with it. A mask grows over footage
/// that is brought back beside it: what it hides may show there too.
[[nodiscard]] std::vector<MaskKeyframe> retimed(std::vector<MaskKeyframe> masks, const TimeWarp& warp);
[[nodiscard]] std::vector<FocusKeyframe> retimed(std::vector<FocusKeyframe> focuses, const TimeWarp& warp);
[[nodiscard]] std::vector<TapTapKeyframe> retimed(std::vector<TapTapKeyframe> tapTaps, const TimeWarp& warp);

/// Both ends of each ramp keep to their footage; one that runs into a cut arrives at the seam. Of the ramps that begin
/// in cut footage the last begins at the seam, so that what follows is framed as before; cut from the very start, it
/// is what the video opens on. Ramps never overlap, and none is shorter than 0.05 s that was not before: where there is
/// no room, the later one wins. Position keys follow by the same rules, 0.05 s apart; the first stays at its time.
[[nodiscard]] ZoomTracks retimed(ZoomTracks camera, const TimeWarp& warp);

/// All of it but the fragments.
void retime(TimelineTracks& tracks, const TimeWarp& warp);

} // namespace morvelin
