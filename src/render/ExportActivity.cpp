#include "render/ExportActivity.h"

namespace morvelin {

ExportActivity::Entry ExportActivity::add(UUID id, Job job) {
    const std::scoped_lock guard(m_lock);
    m_jobs.insert_or_assign(id, std::move(job));
    return {*this, id};
}

bool ExportActivity::isExporting() const {
    const std::scoped_lock guard(m_lock);
    return !m_jobs.empty();
}

// A job is cancelled under the lock: once its entry is gone its callback is never called again.
void ExportActivity::cancel(UUID id) {
    const std::scoped_lock guard(m_lock);
    if (const auto job = m_jobs.find(id); job != m_jobs.end()) job->second.cancel();
}

void ExportActivity::cancelAll() {
    const std::scoped_lock guard(m_lock);
    for (const auto& [id, job] : m_jobs) job.cancel();
}

void ExportActivity::remove(UUID id) {
    const std::scoped_lock guard(m_lock);
    m_jobs.erase(id);
}

} // namespace morvelin
