// How a project's look reads in tool results: background, frame, pointer and webcam bubble.
#pragma once

#include <filesystem>

#include "core/Project.h"
#include "core/base/JSON.h"

namespace morvelin {

/// Whether the pointer is drawn over the recording, or was recorded as part of its picture.
enum class CursorOrigin { Drawn, Recorded };

/// `bundleURL` is where the project lies, and with it a picture of the user's.
[[nodiscard]] JSONValue describeStyle(const EditPayload& edit, CursorOrigin cursor,
                                      const std::filesystem::path& bundleURL);
[[nodiscard]] JSONValue describeStyle(const Project& project, CursorOrigin cursor);
/// For a project that has a camera track.
[[nodiscard]] JSONValue describeCamera(const EditPayload& edit);
[[nodiscard]] JSONValue describeCamera(const Project& project);

} // namespace morvelin
