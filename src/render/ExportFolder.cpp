#include "render/ExportFolder.h"

#include <cerrno>
#include <chrono>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "core/base/Files.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kPrefix = "Morvelin-Export-";
/// A folder has its name without this once it is locked, so that one without a lock belongs to nobody.
constexpr std::string_view kNotYetLocked = ".new";
/// A folder this young may be about to be locked.
constexpr std::chrono::seconds kLockingTakes{60};

/// A descriptor of the folder under its lock, or -1 while somebody else holds it.
int lockFolder(const fs::path& folder) {
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd >= 0 && ::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

bool isOld(const fs::path& folder) {
    std::error_code error;
    const auto written = fs::last_write_time(folder, error);
    return !error && fs::file_time_type::clock::now() - written > kLockingTakes;
}

/// Whether the folder is an export's that has ended, unless it is locked.
bool mayBeSwept(const fs::path& folder) {
    std::string name = folder.filename().string();
    const bool isNew = name.ends_with(kNotYetLocked);
    if (isNew) name.resize(name.size() - kNotYetLocked.size());
    if (!name.starts_with(kPrefix) || !UUID::parse(std::string_view(name).substr(kPrefix.size()))) return false;
    return !isNew || isOld(folder);
}

/// What a killed export left is of no use to anybody; a failure to remove it costs only disk space.
void sweepDeadExports(const fs::path& folder) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const fs::path& path = entry->path();
        if (!mayBeSwept(path)) continue;
        const int lock = lockFolder(path);
        if (lock < 0) continue;
        std::error_code ignored;
        fs::remove_all(path, ignored);
        ::close(lock);
    }
}

} // namespace

Result<ExportFolder, ExportError> ExportFolder::create(const fs::path& target, IdSource& ids) {
    const fs::path parent = target.parent_path();
    std::error_code error;
    if (!fs::is_directory(parent, error))
        return failure(ExportError{ExportError::Kind::TargetFolderMissing, target, {}});
    if (!target.has_filename() || fs::is_directory(target, error))
        return failure(ExportError{ExportError::Kind::TargetIsFolder, target, {}});

    sweepDeadExports(parent);
    const fs::path folder = parent / fmt::format("{}{}", kPrefix, ids.next().text());
    const fs::path unlocked = fmt::format("{}{}", folder.string(), kNotYetLocked);
    if (::mkdir(unlocked.c_str(), 0700) != 0) return failure(ExportError::fromErrno(errno, target));
    ExportFolder made(target, unlocked, lockFolder(unlocked));
    if (::rename(unlocked.c_str(), folder.c_str()) != 0) return failure(ExportError::fromErrno(errno, target));
    made.m_folder = folder;
    return made;
}

ExportFolder::ExportFolder(ExportFolder&& other) noexcept
    : m_target(std::move(other.m_target)),
      m_folder(std::exchange(other.m_folder, {})),
      m_lock(std::exchange(other.m_lock, -1)) {}

ExportFolder::~ExportFolder() {
    std::error_code ignored;
    if (!m_folder.empty()) fs::remove_all(m_folder, ignored);
    if (m_lock >= 0) ::close(m_lock);
}

Result<void, ExportError> ExportFolder::takePlace() {
    if (const auto moved = moveItem(file(), m_target); !moved)
        return failure(ExportError::fromErrno(moved.error().code, m_target));
    return {};
}

} // namespace morvelin
