// How a project's look reads in tool results: background, frame, pointer and webcam bubble.
#pragma once

#include "core/ProjectVersion.h"
#include "core/base/JSON.h"

namespace morvelin {

/// Whether the pointer is drawn over the recording, or was recorded as part of its picture.
enum class CursorOrigin { Drawn, Recorded };

[[nodiscard]] JSONValue describeStyle(const EditPayload& edit, CursorOrigin cursor);
/// For a project that has a camera track.
[[nodiscard]] JSONValue describeCamera(const EditPayload& edit);

} // namespace morvelin
