// One line of a list of projects, as agents read it. Used by `list_projects` and by the resource of all projects.
#pragma once

#include "core/base/JSON.h"
#include "storage/ProjectsFolder.h"

namespace morvelin {

/// The first `limit` projects, the one that changed last first: `name`, `path` and `modified` of each, and `duration`
/// (seconds) and `created` where its header can be read.
[[nodiscard]] JSONValue projectSummaries(const ProjectsFolder& library, std::size_t limit);

} // namespace morvelin
