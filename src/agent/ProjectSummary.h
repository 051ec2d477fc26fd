// One line of a list of projects, as agents read it. Used by `list_projects` and by the resource of all projects.
#pragma once

#include "core/base/JSON.h"
#include "storage/ProjectsFolder.h"

namespace morvelin {

/// `name`, `path` and `modified`; also `duration` (seconds) and `created` where the project's header can be read.
/// Nothing when the bundle is gone.
[[nodiscard]] std::optional<JSONValue> projectSummary(const ProjectsFolder::Entry& entry);

/// The first `limit` projects, the one that changed last first.
[[nodiscard]] JSONValue projectSummaries(const ProjectsFolder& library, std::size_t limit);

} // namespace morvelin
