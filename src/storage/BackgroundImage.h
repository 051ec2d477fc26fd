// Where the picture behind a project's video lies now.
#pragma once

#include <filesystem>
#include <optional>

#include "core/Style.h"

namespace morvelin {

/// The file of the background's own picture; nothing where none was ever chosen. A project keeps the picture in its
/// folder but holds its whole path, which no longer leads there once the project was renamed, copied or moved: a path
/// into any project's folder therefore means the same file of `bundleFolder`, if that has it.
[[nodiscard]] std::optional<std::filesystem::path> backgroundImagePath(const std::filesystem::path& bundleFolder,
                                                                       const Background& background);

} // namespace morvelin
