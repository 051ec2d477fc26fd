// Reads the list of projects off the main thread, so that a quick succession of requests shows the last one.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/base/EventLoop.h"
#include "core/base/Identity.h"
#include "storage/RecentProjectsStore.h"

namespace morvelin {

/// Part of a view model, on the main thread. The list and the error are those of the last reading that counted.
class ProjectListLoader {
public:
    using Projects = std::vector<RecentProject>;
    /// Gives the list; called on a worker's thread.
    using LoadProjects = std::function<Result<Projects, FileError>()>;

    /// `loaded` is called after each reading that counts.
    ProjectListLoader(EventLoop& loop, IdSource& ids, LoadProjects loadProjects, std::function<void()> loaded);
    ProjectListLoader(const ProjectListLoader&) = delete;
    ProjectListLoader& operator=(const ProjectListLoader&) = delete;

    [[nodiscard]] const Projects& projects() const { return m_projects; }
    [[nodiscard]] const std::optional<std::string>& error() const { return m_error; }
    /// The reading under way.
    [[nodiscard]] const std::optional<UUID>& requestID() const { return m_requestID; }

    /// Reads the list; an earlier reading that is still under way no longer counts.
    void load();
    /// What is still being read no longer counts.
    void drop() { m_requestID.reset(); }

private:
    using Self = std::weak_ptr<ProjectListLoader*>;
    static Task<void> loading(EventLoop& loop, Self self, UUID request, LoadProjects loadProjects);
    void take(const UUID& request, Result<Projects, FileError> loaded);

    EventLoop& m_loop;
    IdSource& m_ids;
    LoadProjects m_loadProjects;
    std::function<void()> m_loaded;
    Projects m_projects;
    std::optional<std::string> m_error;
    std::optional<UUID> m_requestID;
    std::shared_ptr<ProjectListLoader*> m_self; ///< a worker may outlive this
};

} // namespace morvelin
