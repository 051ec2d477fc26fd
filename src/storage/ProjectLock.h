// Keeps the processes that write to one project apart: whoever loads, edits and saves it holds this meanwhile.
#pragma once

#include <filesystem>
#include <string>

#include "core/base/AdvisoryLock.h"
#include "core/base/EventLoop.h"
#include "core/base/Result.h"
#include "core/base/Task.h"

namespace morvelin {

struct ProjectLockError {
    std::string sentence;

    [[nodiscard]] const std::string& description() const { return sentence; }
};

/// A lock on the bundle's folder, so that no file of its own lies in the bundle. It goes with the object or the process,
/// and follows the folder to a new name.
class [[nodiscard]] ProjectLock {
public:
    static constexpr Seconds kPatience = 10_s;

    /// Blocks until the project is free: for a program that has nothing else to do.
    static Result<ProjectLock, ProjectLockError> take(const std::filesystem::path& bundleURL,
                                                      Seconds patience = kPatience);
    /// The same without holding up the loop.
    static Task<Result<ProjectLock, ProjectLockError>> wait(EventLoop& loop, std::filesystem::path bundleURL,
                                                            Seconds patience = kPatience);

private:
    explicit ProjectLock(AdvisoryLock lock) : m_lock(std::move(lock)) {}
    using Attempt = Result<std::optional<AdvisoryLock>, FileError>;
    static Result<ProjectLock, ProjectLockError> outcome(Attempt attempt, const std::filesystem::path& bundleURL);

    AdvisoryLock m_lock;
};

} // namespace morvelin
