// The tools that manage a project's versions, and projects as a whole, on the files.
#pragma once

#include <stop_token>

#include "agent/AgentFolders.h"
#include "agent/CommandTable.h"
#include "agent/ProjectSnapshot.h"
#include "core/base/EventLoop.h"
#include "platform/Trash.h"
#include "storage/ProjectVersionStore.h"

namespace morvelin {

/// Each change holds the project's lock from reading to saving, so that two writers lose nothing.
class VersionTools {
public:
    struct Services {
        const AgentFolders& folders;
        ProjectBundle::Services bundles;
        ProjectSnapshots& snapshots;
        EventLoop& loop;
        Trash& trash;
    };

    explicit VersionTools(Services services) : m_services(std::move(services)) {}
    VersionTools(const VersionTools&) = delete;
    VersionTools& operator=(const VersionTools&) = delete;
    /// A copy under way ends: the program is not to wait for gigabytes.
    ~VersionTools() { m_stop.request_stop(); }

    void addTo(CommandTable& commands);

private:
    using Edit = ToolOutcome (VersionTools::*)(ProjectVersionStore&, const ArgumentReader&) const;

    void addEdit(CommandTable& commands, const char* tool, Edit edit);
    /// Opens the project, runs the edit, and sees that all of it reached the disk.
    Task<ToolOutcome> edited(JSONValue arguments, Edit edit);

    ToolOutcome listVersions(const ArgumentReader& arguments) const;
    ToolOutcome createVersion(ProjectVersionStore& store, const ArgumentReader& arguments) const;
    ToolOutcome renameVersion(ProjectVersionStore& store, const ArgumentReader& arguments) const;
    ToolOutcome switchVersion(ProjectVersionStore& store, const ArgumentReader& arguments) const;
    ToolOutcome deleteVersion(ProjectVersionStore& store, const ArgumentReader& arguments) const;
    ToolOutcome renameProject(ProjectVersionStore& store, const ArgumentReader& arguments) const;
    Task<ToolOutcome> duplicateProject(JSONValue arguments);
    Task<ToolOutcome> deleteProject(JSONValue arguments);
    ToolOutcome openProject(const ArgumentReader& arguments) const;

    Services m_services;
    std::stop_source m_stop;
};

} // namespace morvelin
