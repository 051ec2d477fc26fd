#include "storage/ProjectLock.h"

#include <fmt/format.h>

namespace morvelin {

namespace fs = std::filesystem;

Result<ProjectLock, ProjectLockError> ProjectLock::outcome(Attempt attempt, const fs::path& bundleURL) {
    if (!attempt) return failure(ProjectLockError{attempt.error().description()});
    if (!*attempt)
        return failure(ProjectLockError{fmt::format(
            "“{}” is being changed by another program. Try again when that is done.", bundleURL.stem().string())});
    return ProjectLock(std::move(**attempt));
}

Result<ProjectLock, ProjectLockError> ProjectLock::take(const fs::path& bundleURL, Seconds patience) {
    return outcome(AdvisoryLock::take(bundleURL, AdvisoryLock::Target::Folder, patience), bundleURL);
}

Task<Result<ProjectLock, ProjectLockError>> ProjectLock::wait(EventLoop& loop, fs::path bundleURL, Seconds patience) {
    const HostTime giveUp = loop.now() + patience;
    for (;;) {
        Attempt attempt = AdvisoryLock::attempt(bundleURL, AdvisoryLock::Target::Folder);
        const bool isWaiting = attempt && !*attempt;
        if (!isWaiting || loop.now() >= giveUp) co_return outcome(std::move(attempt), bundleURL);
        co_await loop.sleep(kLockInterval);
    }
}

} // namespace morvelin
