// A lock on a file or folder that keeps other processes of this program out while one reads, changes and writes.
#pragma once

#include <filesystem>
#include <optional>

#include "core/base/Files.h"
#include "core/base/OwnedDescriptor.h"
#include "core/base/Result.h"
#include "core/base/Time.h"

namespace morvelin {

/// Held until it is destroyed or the process ends, however it ends. Two locks of one process keep each other out as two
/// processes do. Where a file system knows no locks it is held in name only.
class [[nodiscard]] AdvisoryLock {
public:
    enum class Target {
        Folder, ///< the folder itself; must exist
        File,   ///< a file that is made where it is missing
    };

    /// One attempt that never waits: nothing where another holds the lock; fails where the path can't be opened.
    static Result<std::optional<AdvisoryLock>, FileError> attempt(const std::filesystem::path& path, Target target);
    /// Blocks until the lock is free, but no longer than `patience`: then nothing.
    static Result<std::optional<AdvisoryLock>, FileError> take(const std::filesystem::path& path, Target target,
                                                               Seconds patience);

private:
    explicit AdvisoryLock(OwnedDescriptor descriptor) : m_descriptor(std::move(descriptor)) {}
    OwnedDescriptor m_descriptor;
};

/// How long lies between two attempts of whoever waits for a lock.
inline constexpr Seconds kLockInterval = 0.01_s;

} // namespace morvelin
