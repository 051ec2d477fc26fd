// Applies one agent's edit to one project, through the open editor or straight on the bundle.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <variant>
#include <vector>

#include "agent/CommandTable.h"
#include "agent/MCPLiveEditor.h"
#include "core/CursorEvent.h"
#include "core/base/EventLoop.h"
#include "storage/ProjectLock.h"
#include "storage/ProjectVersionStore.h"

namespace morvelin {

/// What an edit tool changes, and what it may look at. The tool works on a copy: what it leaves in `edit` is saved when
/// it succeeds, and forgotten when it fails.
struct EditedProject {
    std::filesystem::path bundleURL;
    EditPayload edit;
    const std::vector<CursorEvent>& cursorEvents;
    bool hasCamera = false;
    bool isCursorDrawn = false;
    const ProjectBundle::Services& services;
    bool isTranscriptChanged = false;
    /// Takes back what the tool wrote beside the edit; run in reverse order when it fails or the edit can't be saved.
    std::vector<std::function<void()>> undoes;
};

using EditTool = std::function<ToolOutcome(EditedProject&, const ArgumentReader&)>;

/// Lives for one tool call and keeps no state across calls.
class MCPProjectEditor {
public:
    struct Disk {
        std::unique_ptr<ProjectVersionStore> store;
        ProjectLock lock; ///< against other processes, from reading to saving
    };
    struct Live {
        MCPLiveEditor& editor;
    };
    using Backend = std::variant<Disk, Live>;

    struct Services {
        ProjectBundle::Services bundles;
        EventLoop& loop;
        LiveEditors liveEditors;
    };

    using Opened = Result<std::unique_ptr<MCPProjectEditor>, std::string>;
    static Task<Opened> open(std::filesystem::path bundleURL, const Services& services);

    /// Runs the tool in one go, without suspending between reading and saving.
    ToolOutcome apply(const EditTool& tool, const ArgumentReader& arguments);

private:
    MCPProjectEditor(std::filesystem::path bundleURL, ProjectBundle::Services services)
        : m_bundleURL(std::move(bundleURL)),
          m_services(std::move(services)) {}

    [[nodiscard]] EditPayload currentEdit() const;
    [[nodiscard]] bool save(EditedProject&& project);

    std::filesystem::path m_bundleURL;
    ProjectBundle::Services m_services;
    std::vector<CursorEvent> m_cursorEvents;
    bool m_hasCamera = false;
    std::unique_ptr<Backend> m_backend;
};

} // namespace morvelin
