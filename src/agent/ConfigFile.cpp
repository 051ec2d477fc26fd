#include "agent/ConfigFile.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/base/OwnedDescriptor.h"
#include "core/base/AdvisoryLock.h"
#include "core/base/Files.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

using Content = std::optional<std::string>;

constexpr mode_t kUserAlone = 0600; // such files hold keys
constexpr Seconds kLockPatience = 2_s;

MCPInstallError writeFailed(const fs::path& file, int code) {
    return MCPInstallError(MCPInstallError::WriteFailed{file.filename().string(), std::strerror(code)});
}

fs::path beside(const fs::path& file, const char* suffix) { return file.string() + suffix; }

/// The file that a chain of links ends at: people keep such files elsewhere and link to them.
fs::path linkTarget(fs::path file) {
    constexpr int kMostLinks = 40;
    for (int i = 0; i < kMostLinks; ++i) {
        std::error_code error;
        const fs::path target = fs::read_symlink(file, error);
        if (error) break;
        file = file.parent_path() / target;
    }
    return file;
}

/// Content on its way into a file's place. Until it gets there, nothing of it stays when this goes.
class PendingFile {
public:
    explicit PendingFile(fs::path path) : m_path(std::move(path)) {}
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;
    ~PendingFile() { ::unlink(m_path.c_str()); }

    /// Writes the file and syncs it; what a crash left under its name is overwritten. Gives errno, 0 where it worked.
    [[nodiscard]] int fill(std::string_view content, mode_t mode) const {
        ::unlink(m_path.c_str());
        const OwnedDescriptor fd(::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kUserAlone));
        const bool isWritten = fd.isOpen() && writeAll(fd.get(), content) && ::fchmod(fd.get(), mode) == 0 &&
                               ::fsync(fd.get()) == 0;
        return isWritten ? 0 : errno;
    }
    [[nodiscard]] int moveTo(const fs::path& place) const {
        const auto moved = moveItem(m_path, place);
        return moved ? 0 : moved.error().code;
    }

private:
    fs::path m_path;
};

mode_t modeOf(const fs::path& file) {
    struct stat status {};
    constexpr mode_t kPermissions = 07777;
    return ::stat(file.c_str(), &status) == 0 ? status.st_mode & kPermissions : kUserAlone;
}

enum class Replaced { Yes, ChangedMeanwhile };

/// Puts `after` into the place of `before`, unless the file has another content by now.
Result<Replaced, MCPInstallError> replace(const fs::path& file, const Content& before, const std::string& after) {
    const mode_t mode = modeOf(file);
    const PendingFile pending(beside(file, ".morvelin-tmp"));
    if (before) {
        if (const int code = pending.fill(*before, mode)) return failure(writeFailed(file, code));
        if (const int code = pending.moveTo(beside(file, ".morvelin-backup"))) return failure(writeFailed(file, code));
    }
    if (const int code = pending.fill(after, mode)) return failure(writeFailed(file, code));

    if (const auto now = readConfigFile(file); !now || *now != before) return Replaced::ChangedMeanwhile;
    if (const int code = pending.moveTo(file)) return failure(writeFailed(file, code));
    return Replaced::Yes;
}

/// One attempt at reading, editing and replacing.
Result<Replaced, MCPInstallError> editOnce(const fs::path& file, const ConfigEdit& edit) {
    auto before = readConfigFile(file);
    if (!before) return passOn(std::move(before));
    auto after = edit(*before);
    if (!after) return passOn(std::move(after));
    if (!*after) return Replaced::Yes;
    return replace(file, *before, **after);
}

} // namespace

Result<Content, MCPInstallError> readConfigFile(const fs::path& file) {
    auto content = readFile(file);
    if (content) return std::move(*content);
    if (content.error().code == ENOENT) return Content();
    return failure(
        MCPInstallError(MCPInstallError::Unreadable{file.filename().string(), std::strerror(content.error().code)}));
}

Result<void, MCPInstallError> editConfigFile(const fs::path& link, const ConfigEdit& edit) {
    const fs::path file = linkTarget(link);
    const fs::path folder = file.parent_path();
    if (auto made = createFolder(folder); !made) return failure(writeFailed(file, made.error().code));

    const auto lock = AdvisoryLock::take(folder, AdvisoryLock::Target::Folder, kLockPatience);
    if (!lock) return failure(writeFailed(file, lock.error().code));
    if (!*lock) return failure(writeFailed(file, EBUSY));

    constexpr int kMostAttempts = 5;
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        auto replaced = editOnce(file, edit);
        if (!replaced) return passOn(std::move(replaced));
        if (*replaced == Replaced::Yes) return {};
    }
    return failure(writeFailed(file, EBUSY));
}

} // namespace morvelin
