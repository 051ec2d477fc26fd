// The automatic zooms of a take that has been edited: making them anew, and whether that would lose hand work.
#pragma once

#include <span>

#include "core/CursorEvent.h"
#include "core/Style.h"
#include "core/VideoFragment.h"
#include "timeline/ZoomEngine.h"

namespace morvelin {

/// Whether a person or an agent has changed the tracks. The keys that every track begins with don't count, nor does
/// what a cut or another speed does to generated keys.
[[nodiscard]] bool hasHandEdits(const ZoomTracks& tracks);

/// Both tracks whole, from the clicks and gestures that the fragments still show, over the edit's duration.
[[nodiscard]] ZoomTracks rebuiltZoomTracks(std::span<const CursorEvent> events,
                                           const std::vector<VideoFragment>& fragments, const EditingSettings& settings,
                                           IdSource& ids);

} // namespace morvelin
