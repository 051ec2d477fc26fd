// How a project's narration takes and a version's stack of audio tracks read in tool results.
#pragma once

#include "core/Project.h"
#include "core/base/JSON.h"
#include "narration/NarrationLibrary.h"

namespace morvelin {

/// The takes that are offered, by number: what made each, where it plays, and whether the edit has changed since.
[[nodiscard]] JSONValue describeTakes(const NarrationLibrary& library, const Project& project);

/// The stack, top first: a take's track names the take, the recording's own is called "original".
[[nodiscard]] JSONValue describeAudioTracks(const Project& project, const NarrationLibrary& library);

} // namespace morvelin
