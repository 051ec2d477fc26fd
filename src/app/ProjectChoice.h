// Which project a command means.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "core/base/Result.h"

namespace morvelin {

/// The bundle's folder: `wanted` as a path, or as a name in the projects folder; without one the project that changed
/// last. The error is the sentence that a user reads.
Result<std::filesystem::path, std::string> chooseProject(const std::optional<std::filesystem::path>& wanted,
                                                         const std::filesystem::path& projectsFolder);

} // namespace morvelin
