#include "storage/RecordingHistoryViewModel.h"

namespace morvelin {

RecordingHistoryViewModel::RecordingHistoryViewModel(Surroundings surroundings, RecentProjectsStore store,
                                                     Actions actions)
    : m_surroundings(surroundings),
      m_actions(std::move(actions)),
      m_list(
          surroundings.loop, surroundings.ids, [store = std::move(store)] { return store.list(); },
          [this] { changed(); }),
      m_self(std::make_shared<RecordingHistoryViewModel*>(this)) {
    const Date now = surroundings.clock.now();
    m_filter.startDate = surroundings.zone.startOfDay(now);
    m_filter.endDate = m_filter.referenceDate = now;
}

auto RecordingHistoryViewModel::sections() const -> std::vector<Section> {
    return RecordingHistory::sections(projects(), m_filter, m_layout, m_surroundings.zone);
}

void RecordingHistoryViewModel::setLayout(Layout layout) {
    m_layout = layout;
    changed();
}

void RecordingHistoryViewModel::setFilter(Filter filter) {
    m_filter = std::move(filter);
    changed();
}

void RecordingHistoryViewModel::load() {
    m_filter.referenceDate = m_surroundings.clock.now();
    m_list.load();
    changed();
}

void RecordingHistoryViewModel::open(const RecentProject& project) {
    if (m_openingProject) return;
    m_openingProject = project.bundleURL;
    m_openingError.reset();
    changed();
    m_surroundings.loop.spawn(opening(m_self, m_actions.open(project.bundleURL)));
}

void RecordingHistoryViewModel::deleteProject(const RecentProject& project) {
    m_deletionError.reset();
    m_actions.markProjectDeleted(project.bundleURL);
    m_surroundings.loop.spawn(deleting(m_surroundings.loop, m_self,
                                       [remove = m_actions.remove, url = project.bundleURL] { return remove(url); }));
}

Task<void> RecordingHistoryViewModel::opening(Self self, Task<std::optional<std::string>> task) {
    auto error = co_await task;
    const auto alive = self.lock();
    if (!alive) co_return;
    (*alive)->m_openingProject.reset();
    (*alive)->m_openingError = std::move(error);
    (*alive)->changed();
}

Task<void> RecordingHistoryViewModel::deleting(EventLoop& loop, Self self,
                                               std::function<std::optional<std::string>()> remove) {
    auto error = co_await onWorker(loop, std::move(remove));
    const auto alive = self.lock();
    if (!alive) co_return;
    (*alive)->m_deletionError = std::move(error);
    (*alive)->load();
}

void RecordingHistoryViewModel::changed() const {
    if (m_listener) m_listener();
}

} // namespace morvelin
