#include "agent/ProjectResources.h"

#include <limits>

#include <fmt/format.h>

#include "agent/CommandTable.h"
#include "agent/ProjectSummary.h"
#include "core/base/PercentEncoding.h"
#include "core/base/Rounding.h"

namespace morvelin {

namespace {

constexpr std::string_view kAllProjects = "morvelin://projects";
constexpr std::string_view kProject = "morvelin://project/";

JSONValue describeCapture(const ProjectSnapshot& snapshot) {
    const Project& project = snapshot.project;
    JSONValue versions = JSONValue::array();
    for (const ProjectVersion& version : snapshot.contents.versions)
        versions.push_back({{"name", version.name},
                            {"locked", version.isInitial},
                            {"current", version.id == snapshot.contents.currentVersionID},
                            {"updated", version.updatedAt.text()}});
    return {{"name", project.bundleURL.stem().string()},
            {"path", project.bundleURL.string()},
            {"duration", roundedTo3Decimals(project.originalDuration)},
            {"created", project.createdAt.text()},
            {"has_camera", project.cameraURL.has_value()},
            {"clicks", snapshot.presses.size()},
            {"versions", std::move(versions)}};
}

} // namespace

std::vector<MCPResource> projectResources(const ProjectsFolder& library) {
    std::vector<MCPResource> resources{{std::string(kAllProjects), "Morvelin projects",
                                        "Every .morvelin recording on this machine, most recent first."}};
    for (const ProjectsFolder::Entry& entry : library.byModification()) {
        const std::string name = entry.name();
        resources.push_back({std::string(kProject) + percentEncoded(name), name,
                             fmt::format("Capture details and saved versions for “{}”.", name)});
    }
    return resources;
}

Result<JSONValue, std::string> readProjectResource(const std::string& uri, const ProjectsFolder& library,
                                                   ProjectSnapshots& snapshots) {
    if (uri == kAllProjects)
        return JSONValue{{"projects", projectSummaries(library, std::numeric_limits<std::size_t>::max())}};
    const auto unknown = [&] { return refusal(MCPToolError(MCPToolError::UnknownResource{uri})); };
    if (!uri.starts_with(kProject)) return unknown();
    const auto name = percentDecoded(std::string_view(uri).substr(kProject.size()));
    const auto bundle = name ? library.named(*name) : std::nullopt;
    if (!bundle) return unknown();
    const auto snapshot = snapshots.read(*bundle);
    if (!snapshot) return refusal(snapshot.error());
    return describeCapture(**snapshot);
}

} // namespace morvelin
