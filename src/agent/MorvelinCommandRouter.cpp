#include "agent/MorvelinCommandRouter.h"

#include <fmt/format.h>

#include "agent/ProjectResources.h"
#include "agent/ToolCatalogue.h"

namespace morvelin {

namespace {

/// Of a name that no family of tools took.
std::string refusalOf(const std::string& tool) {
    if (findTool(tool) != nullptr) return fmt::format("“{}” is not part of this version of Morvelin yet.", tool);
    return MCPToolError(MCPToolError::UnknownTool{tool}).description();
}

RecordingTools::Services recordingServices(const MorvelinCommandRouter::Services& services) {
    if (!services.desktop) return {services.loop};
    return {services.loop, &services.desktop->host, &services.desktop->posting};
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
      m_frameTools({m_services.folders, m_snapshots, m_services.loop, m_services.movies, m_services.bundles.log}),
      m_exportTools({m_services.folders, m_snapshots, m_services.loop, m_services.exportEngineFactory}),
      m_pacer(m_services.loop),
      m_recordingTools(recordingServices(m_services), m_pacer) {
    if (const auto& desktop = m_services.desktop)
        m_inputTools.emplace(InputTools::Services{m_services.loop, desktop->host, desktop->posting,
                                                  ScreenCapturer(m_services.loop, desktop->screen, desktop->pointer)},
                             m_pacer);
    m_readingTools.addTo(m_commands);
    m_versionTools.addTo(m_commands);
    m_editTools.addTo(m_commands);
    m_frameTools.addTo(m_commands);
    m_exportTools.addTo(m_commands);
    m_recordingTools.addTo(m_commands);
    if (m_inputTools)
        m_inputTools->addTo(m_commands);
    else
        InputTools::addWithoutDesktop(m_commands);
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
