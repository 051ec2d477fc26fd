// Which project a tool call means.
#pragma once

#include <filesystem>

#include "agent/AgentFolders.h"
#include "agent/ArgumentReader.h"
#include "agent/MCPToolError.h"
#include "agent/ProjectSnapshot.h"
#include "core/base/Result.h"

namespace morvelin {

/// The `project` argument: a path or a name; without one the project that changed last.
Result<std::filesystem::path, MCPToolError> resolveProject(const ArgumentReader& arguments,
                                                           const AgentFolders& folders);

/// The same for a tool that takes a project away: it never falls back to another one than it was given, and nothing but
/// a folder with a project's extension will do.
Result<std::filesystem::path, MCPToolError> resolveNamedProject(const ArgumentReader& arguments,
                                                                const AgentFolders& folders);

/// The project that `resolveProject` finds, as its files stand; the error is one sentence.
Result<std::shared_ptr<const ProjectSnapshot>, std::string> readProject(const ArgumentReader& arguments,
                                                                        const AgentFolders& folders,
                                                                        ProjectSnapshots& snapshots);

} // namespace morvelin
