// The tool that renders a project to a video.
#pragma once

#include <functional>
#include <stop_token>

#include "agent/AgentFolders.h"
#include "agent/CommandTable.h"
#include "agent/ProjectSnapshot.h"
#include "core/base/EventLoop.h"
#include "render/ExportEngine.h"

namespace morvelin {

/// Makes the engine of one export, with the settings as they stand then.
using ExportEngineFactory = std::function<ExportEngine()>;

/// Confined to the main thread; videos are rendered on a worker, one at a time. A client that goes away meanwhile leaves
/// its export running.
class ExportTools {
public:
    struct Services {
        const AgentFolders& folders;
        ProjectSnapshots& snapshots;
        EventLoop& loop;
        ExportEngineFactory exportEngineFactory;
    };

    explicit ExportTools(Services services) : m_services(std::move(services)) {}
    ExportTools(const ExportTools&) = delete;
    ExportTools& operator=(const ExportTools&) = delete;
    /// An export under way ends, and leaves nothing: the program is not to wait for a whole video.
    ~ExportTools() { m_stop.request_stop(); }

    void addTo(CommandTable& commands);

private:
    Task<ToolOutcome> exportVideo(JSONValue arguments);

    Services m_services;
    bool m_isExporting = false;
    std::stop_source m_stop;
};

} // namespace morvelin
