#include "agent/ProjectArgument.h"

#include "agent/CommandTable.h"
#include "core/base/Text.h"
#include "storage/BundleFiles.h"

namespace morvelin {

namespace {

namespace fs = std::filesystem;

constexpr const char* kProject = "project";

Result<fs::path, MCPToolError> found(const std::string& pathOrName, const AgentFolders& folders) {
    if (auto bundle = folders.projects.find(pathOrName, folders.home)) return std::move(*bundle);
    return failure(MCPToolError(MCPToolError::ProjectNotFound{pathOrName}));
}

} // namespace

Result<fs::path, MCPToolError> resolveProject(const ArgumentReader& arguments, const AgentFolders& folders) {
    const std::string wanted = arguments.text(kProject).value_or("");
    if (!wanted.empty()) return found(wanted, folders);
    if (auto last = folders.projects.lastModified()) return std::move(*last);
    return failure(MCPToolError(MCPToolError::NoProjects{}));
}

Result<fs::path, MCPToolError> resolveNamedProject(const ArgumentReader& arguments, const AgentFolders& folders) {
    const std::string wanted = trimmed(arguments.text(kProject).value_or(""));
    if (wanted.empty())
        return failure(MCPToolError(MCPToolError::InvalidArgument{
            kProject, "expected the project's path or name. This tool never falls back to the most recent project"}));
    auto bundle = found(wanted, folders);
    std::error_code error;
    if (bundle && !(ProjectBundle::hasBundleExtension(bundle->filename().native()) && fs::is_directory(*bundle, error)))
        return failure(MCPToolError(MCPToolError::ProjectNotFound{wanted}));
    return bundle;
}

Result<std::shared_ptr<const ProjectSnapshot>, std::string> readProject(const ArgumentReader& arguments,
                                                                        const AgentFolders& folders,
                                                                        ProjectSnapshots& snapshots) {
    const auto bundle = resolveProject(arguments, folders);
    if (!bundle) return refusal(bundle.error());
    auto snapshot = snapshots.read(*bundle);
    if (!snapshot) return refusal(snapshot.error());
    return std::move(*snapshot);
}

} // namespace morvelin
