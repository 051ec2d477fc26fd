#include "core/base/AdvisoryLock.h"

#include <cerrno>
#include <chrono>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace morvelin {

namespace fs = std::filesystem;

namespace {

int openForLock(const fs::path& path, AdvisoryLock::Target target) {
    switch (target) {
    case AdvisoryLock::Target::Folder: return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    case AdvisoryLock::Target::File: return ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    }
    return -1;
}

/// Whether the path still leads to what was opened: it may have been moved while the lock was waited for.
bool isStillAt(const fs::path& path, int fd) {
    struct stat opened {};
    struct stat present {};
    return ::fstat(fd, &opened) == 0 && ::stat(path.c_str(), &present) == 0 && opened.st_dev == present.st_dev &&
           opened.st_ino == present.st_ino;
}

} // namespace

Result<std::optional<AdvisoryLock>, FileError> AdvisoryLock::attempt(const fs::path& path, Target target) {
    OwnedDescriptor opened(openForLock(path, target));
    if (!opened.isOpen()) return failure(FileError{FileError::Operation::Write, path, errno});
    if (::flock(opened.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return std::nullopt;
    if (!isStillAt(path, opened.get())) return std::nullopt;
    return std::optional(AdvisoryLock(std::move(opened)));
}

Result<std::optional<AdvisoryLock>, FileError> AdvisoryLock::take(const fs::path& path, Target target,
                                                                  Seconds patience) {
    using Clock = std::chrono::steady_clock;
    const auto giveUp = Clock::now() + std::chrono::duration<double>(patience.value);
    for (;;) {
        auto lock = attempt(path, target);
        if (!lock || *lock || Clock::now() >= giveUp) return lock;
        std::this_thread::sleep_for(std::chrono::duration<double>(kLockInterval.value));
    }
}

} // namespace morvelin
