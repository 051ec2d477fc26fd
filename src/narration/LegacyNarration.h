// The one take of the older format (`narration.m4a` and `narration.json`), and how it becomes one of the list.
#pragma once

#include <filesystem>
#include <optional>

#include "narration/NarrationTake.h"

namespace morvelin {

/// Nothing where there is no such take, or a newer program wrote it.
[[nodiscard]] std::optional<NarrationTake> readLegacyTake(const std::filesystem::path& bundleURL);

/// Puts the audio where those of other takes are, too, and gives the take its constant id to store. Tells whether that
/// worked; when it didn't, take and files are as before.
bool giveOwnFile(NarrationTake& take, const std::filesystem::path& bundleURL);

/// Once the list holds the take. What can't be removed stays, and nobody reads it again; so does a pending recording
/// that is being made.
void removeLegacyFiles(const std::filesystem::path& bundleURL);

} // namespace morvelin
