// What agents can read by address: the list of projects, and each project's capture and versions.
#pragma once

#include <string>
#include <vector>

#include "agent/AgentFolders.h"
#include "agent/ProjectSnapshot.h"
#include "agent/ToolRouter.h"

namespace morvelin {

/// The fixed resource first, then one for each project, the one that changed last first.
[[nodiscard]] std::vector<MCPResource> projectResources(const ProjectsFolder& library);

/// Fails with one sentence.
Result<JSONValue, std::string> readProjectResource(const std::string& uri, const ProjectsFolder& library,
                                                   ProjectSnapshots& snapshots);

} // namespace morvelin
