// The single place where a tool's name becomes work. Owned by the server, or by a command that works on the files.
#pragma once

#include <memory>

#include "agent/AgentFolders.h"
#include "agent/CommandTable.h"
#include "agent/EditTools.h"
#include "agent/ExportTools.h"
#include "agent/FrameTools.h"
#include "agent/InputTools.h"
#include "agent/ProjectSnapshot.h"
#include "agent/ReadingTools.h"
#include "agent/RecordingTools.h"
#include "agent/ToolRouter.h"
#include "agent/VersionTools.h"
#include "platform/Trash.h"
#include "storage/ProjectBundle.h"

namespace morvelin {

/// Confined to the main thread.
class MorvelinCommandRouter final : public ToolRouter {
public:
    /// What agents record and drive.
    struct DesktopControl {
        MCPHost& host;
        InputPosting& posting;
        ScreenSource& screen;
        PointerSource& pointer;
    };
    struct Services {
        AgentFolders folders;
        ProjectBundle::Services bundles;
        EventLoop& loop;
        Trash& trash;
        const ImageFileProbe& images;
        MovieReaderFactory& movies;
        LiveEditors liveEditors = {}; ///< none: no editor runs
        ExportEngineFactory exportEngineFactory = {};
        std::optional<DesktopControl> desktop = {}; ///< none: a command that works on the files alone
    };

    explicit MorvelinCommandRouter(Services services);
    MorvelinCommandRouter(const MorvelinCommandRouter&) = delete;
    MorvelinCommandRouter& operator=(const MorvelinCommandRouter&) = delete;

    [[nodiscard]] Task<MCPToolResult> call(std::string tool, JSONValue arguments, std::string clientName) override;
    [[nodiscard]] std::vector<MCPResource> resources() override;
    [[nodiscard]] Result<JSONValue, std::string> readResource(const std::string& uri) override;

private:
    Services m_services;
    ProjectSnapshots m_snapshots;
    ReadingTools m_readingTools;
    VersionTools m_versionTools;
    EditTools m_editTools;
    FrameTools m_frameTools;
    ExportTools m_exportTools;
    AgentRecordingPacer m_pacer;
    RecordingTools m_recordingTools;
    std::optional<InputTools> m_inputTools; ///< where there is a desktop
    CommandTable m_commands;
};

} // namespace morvelin
