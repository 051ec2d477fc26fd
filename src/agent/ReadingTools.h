// The tools that let an agent see what is there: projects, one project whole, and the events of an export.
#pragma once

#include "agent/AgentFolders.h"
#include "agent/CommandTable.h"
#include "agent/ProjectSnapshot.h"

namespace morvelin {

/// None of them changes anything, but for what opening an old or damaged project makes whole.
class ReadingTools {
public:
    ReadingTools(const AgentFolders& folders, ProjectSnapshots& snapshots)
        : m_folders(folders),
          m_snapshots(snapshots) {}

    void addTo(CommandTable& commands);

private:
    ToolOutcome listProjects(const ArgumentReader& arguments) const;
    ToolOutcome describeProject(const ArgumentReader& arguments) const;
    ToolOutcome readEvents(const ArgumentReader& arguments) const;

    const AgentFolders& m_folders;
    ProjectSnapshots& m_snapshots;
};

} // namespace morvelin
