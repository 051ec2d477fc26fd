// The registry of running exports, so that a quit or an agent's cancel reaches every one of them. Owned by the program.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "core/base/Identity.h"

namespace morvelin {

/// May be used from any thread.
class ExportActivity {
public:
    struct Job {
        std::function<void()> cancel; ///< called on the cancelling thread; must not block
    };

    /// Keeps a job listed while it lives.
    class [[nodiscard]] Entry {
    public:
        Entry(Entry&& other) noexcept : m_activity(std::exchange(other.m_activity, nullptr)), m_id(other.m_id) {}
        Entry& operator=(Entry&&) = delete;
        ~Entry() {
            if (m_activity) m_activity->remove(m_id);
        }

    private:
        friend class ExportActivity;
        Entry(ExportActivity& activity, UUID id) : m_activity(&activity), m_id(id) {}

        ExportActivity* m_activity;
        UUID m_id;
    };

    Entry add(UUID id, Job job);
    [[nodiscard]] bool isExporting() const;
    void cancel(UUID id);
    void cancelAll();

private:
    void remove(UUID id);

    mutable std::mutex m_lock; ///< guards `m_jobs`
    std::map<UUID, Job> m_jobs;
};

} // namespace morvelin
