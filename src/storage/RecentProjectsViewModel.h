// The state of the picker of recent projects, owned by the window that shows it.
#pragma once

#include "storage/ProjectListLoader.h"

namespace morvelin {

/// Confined to the main thread.
class RecentProjectsViewModel {
public:
    RecentProjectsViewModel(EventLoop& loop, IdSource& ids, ProjectListLoader::LoadProjects loadProjects);

    [[nodiscard]] const ProjectListLoader::Projects& projects() const { return m_list.projects(); }
    [[nodiscard]] const std::optional<std::string>& loadError() const { return m_list.error(); }
    [[nodiscard]] bool isLoading() const { return m_list.requestID().has_value(); }
    [[nodiscard]] bool isPresented() const { return m_isPresented; }

    /// Called after each change of the state. One listener at a time.
    void onChange(std::function<void()> listener) { m_listener = std::move(listener); }
    void load();
    /// Shows the picker, with a fresh list.
    void present();
    /// Closes the picker; what is still being read is dropped.
    void dismiss();

private:
    void changed() const;

    ProjectListLoader m_list;
    bool m_isPresented = false;
    std::function<void()> m_listener;
};

} // namespace morvelin
