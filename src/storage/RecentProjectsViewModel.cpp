#include "storage/RecentProjectsViewModel.h"

namespace morvelin {

RecentProjectsViewModel::RecentProjectsViewModel(EventLoop& loop, IdSource& ids,
                                                 ProjectListLoader::LoadProjects loadProjects)
    : m_list(loop, ids, std::move(loadProjects), [this] { changed(); }) {}

void RecentProjectsViewModel::load() {
    m_list.load();
    changed();
}

void RecentProjectsViewModel::present() {
    m_isPresented = true;
    load();
}

void RecentProjectsViewModel::dismiss() {
    m_isPresented = false;
    m_list.drop();
    changed();
}

void RecentProjectsViewModel::changed() const {
    if (m_listener) m_listener();
}

} // namespace morvelin
