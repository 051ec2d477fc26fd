// A project's files made the record that is worked with while it is open.
#pragma once

#include <filesystem>

#include "core/Project.h"
#include "storage/ProjectBundle.h"

namespace morvelin::ProjectBundle {

/// With the edit of the current version. What a version from before the list of audio tracks plays stands in that list.
[[nodiscard]] Project openedProject(const std::filesystem::path& bundleURL, const Contents& contents, IdSource& ids);

} // namespace morvelin::ProjectBundle
