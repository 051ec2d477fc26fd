#include "agent/MorvelinCommandRouter.h"

#include <fmt/format.h>

#include "agent/ProjectResources.h"
#include "agent/RecordingTools.h"
#include "agent/ToolCatalogue.h"

namespace morvelin {

namespace {

/// Of a name that no family of tools took.
std::string refusalOf(const std::string& tool) {
    if (findTool(tool) != nullptr) return fmt::format("“{}” is not part of this version of Morvelin yet.", tool);
    return MCPToolError(MCPToolError::UnknownTool{tool}).description();
}

} // namespace

MorvelinCommandRouter::MorvelinCommandRouter(Services services)
    : m_services(std::move(services)),
      m_snapshots(m_services.bundles),
      m_readingTools(m_services.folders, m_snapshots),
      m_versionTools({m_services.folders, m_services.bundles, m_snapshots, m_services.loop, m_services.trash}),
      m_editTools({m_services.folders,
                   {m_services.bundles, m_services.loop, m_services.liveEditors},
                   m_services.images,
                   m_services.movies}),
      m_frameTools({m_services.folders, m_snapshots, m_services.loop, m_services.movies, m_services.bundles.log}) {
    m_readingTools.addTo(m_commands);
    m_versionTools.addTo(m_commands);
    m_editTools.addTo(m_commands);
    m_frameTools.addTo(m_commands);
    RecordingTools().addTo(m_commands);
}

Task<MCPToolResult> MorvelinCommandRouter::call(std::string tool, JSONValue arguments, std::string) {
    const auto* command = m_commands.find(tool);
    if (command == nullptr) co_return MCPToolResult::failed(refusalOf(tool));
    co_return co_await (*command)(std::move(arguments));
}

std::vector<MCPResource> MorvelinCommandRouter::resources() { return projectResources(m_services.folders.projects); }

Result<JSONValue, std::string> MorvelinCommandRouter::readResource(const std::string& uri) {
    return readProjectResource(uri, m_services.folders.projects, m_snapshots);
}

} // namespace morvelin
