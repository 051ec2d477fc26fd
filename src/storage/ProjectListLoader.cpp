#include "storage/ProjectListLoader.h"

namespace morvelin {

ProjectListLoader::ProjectListLoader(EventLoop& loop, IdSource& ids, LoadProjects loadProjects,
                                     std::function<void()> loaded)
    : m_loop(loop),
      m_ids(ids),
      m_loadProjects(std::move(loadProjects)),
      m_loaded(std::move(loaded)),
      m_self(std::make_shared<ProjectListLoader*>(this)) {}

void ProjectListLoader::load() {
    m_requestID = m_ids.next();
    m_loop.spawn(loading(m_loop, m_self, *m_requestID, m_loadProjects));
}

Task<void> ProjectListLoader::loading(EventLoop& loop, Self self, UUID request, LoadProjects loadProjects) {
    auto loaded = co_await onWorker(loop, std::move(loadProjects));
    if (const auto alive = self.lock()) (*alive)->take(request, std::move(loaded));
}

void ProjectListLoader::take(const UUID& request, Result<Projects, FileError> loaded) {
    if (request != m_requestID) return;
    m_requestID.reset();
    m_error.reset();
    if (loaded)
        m_projects = std::move(*loaded);
    else
        m_error = loaded.error().description();
    m_loaded();
}

} // namespace morvelin
