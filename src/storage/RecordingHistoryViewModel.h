// The state of the history window: what it shows, and the project that is being opened or deleted from it.
#pragma once

#include "core/base/Date.h"
#include "storage/ProjectListLoader.h"
#include "storage/RecordingHistory.h"

namespace morvelin {

/// Confined to the main thread; owned by the window.
class RecordingHistoryViewModel {
public:
    using Layout = RecordingHistory::Layout;
    using DateFilter = RecordingHistory::DateFilter;
    using Filter = RecordingHistory::Filter;
    using Section = RecordingHistory::Section;

    /// What the rest of the program does for the window. A text is the sentence that says why it failed.
    struct Actions {
        std::function<Task<std::optional<std::string>>(std::filesystem::path)> open;
        /// Tells the editor that its project goes away, and closes it; called before a deletion.
        std::function<void(const std::filesystem::path&)> markProjectDeleted;
        /// Moves the project to the Trash; called on a worker's thread.
        std::function<std::optional<std::string>(const std::filesystem::path&)> remove;
    };
    /// References outlive the model.
    struct Surroundings {
        EventLoop& loop;
        IdSource& ids;
        const WallClock& clock;
        const TimeZone& zone;
    };

    RecordingHistoryViewModel(Surroundings surroundings, RecentProjectsStore store, Actions actions);
    RecordingHistoryViewModel(const RecordingHistoryViewModel&) = delete;
    RecordingHistoryViewModel& operator=(const RecordingHistoryViewModel&) = delete;

    [[nodiscard]] const ProjectListLoader::Projects& projects() const { return m_list.projects(); }
    [[nodiscard]] bool isLoading() const { return m_list.requestID().has_value(); }
    [[nodiscard]] const std::optional<std::string>& loadError() const { return m_list.error(); }
    [[nodiscard]] const std::optional<std::string>& openingError() const { return m_openingError; }
    /// The entry that is being opened.
    [[nodiscard]] const std::optional<std::filesystem::path>& openingProject() const { return m_openingProject; }
    [[nodiscard]] const std::optional<std::string>& deletionError() const { return m_deletionError; }
    [[nodiscard]] Layout layout() const { return m_layout; }
    [[nodiscard]] const Filter& filter() const { return m_filter; }
    [[nodiscard]] std::vector<Section> sections() const;

    /// Called after each change of the state. One listener at a time.
    void onChange(std::function<void()> listener) { m_listener = std::move(listener); }
    void setLayout(Layout layout);
    void setFilter(Filter filter);
    /// Reads the list anew; today is then the present day.
    void load();
    /// Opens a project; while one is being opened, another click does nothing.
    void open(const RecentProject& project);
    /// Deletes a project and reads the list anew.
    void deleteProject(const RecentProject& project);

private:
    using Self = std::weak_ptr<RecordingHistoryViewModel*>;
    static Task<void> opening(Self self, Task<std::optional<std::string>> task);
    static Task<void> deleting(EventLoop& loop, Self self, std::function<std::optional<std::string>()> remove);
    void changed() const;

    Surroundings m_surroundings;
    Actions m_actions;
    ProjectListLoader m_list;
    Layout m_layout = Layout::All;
    Filter m_filter;
    std::optional<std::string> m_openingError;
    std::optional<std::filesystem::path> m_openingProject;
    std::optional<std::string> m_deletionError;
    std::function<void()> m_listener;
    std::shared_ptr<RecordingHistoryViewModel*> m_self; ///< an opening may outlive the window
};

} // namespace morvelin
