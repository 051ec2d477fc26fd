// The settings' file itself: read when it has changed, changed under a lock, set aside when it is damaged.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include <sys/stat.h>

#include "core/base/Files.h"
#include "core/base/Log.h"
#include "core/base/Result.h"
#include "platform/linux/GLibHandles.h"

namespace morvelin {

/// Which content of a file was read; another content has another stamp.
struct FileStamp {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = -1; ///< -1 where there is no file
    timespec modified{};
    timespec changed{};

    /// The stamp of what lies at the path now.
    [[nodiscard]] static FileStamp of(const std::filesystem::path& path);
    bool operator==(const FileStamp& other) const;
};

/// A GKeyFile on disk, owned by the settings. Confined to one thread.
class KeyFile {
public:
    KeyFile(std::filesystem::path path, Log log) : m_path(std::move(path)), m_log(std::move(log)) {}

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }
    void log(std::string_view line) const { m_log(line); }

    /// What the file holds now; a missing or unreadable file holds nothing. The pointer is valid until the next call.
    [[nodiscard]] GKeyFile* content();
    /// Reads, edits and writes as one step among all processes.
    Result<void, std::string> edit(const std::function<void(GKeyFile*)>& change);

private:
    enum class Reading { Understood, Damaged, Failed };

    Reading read();
    /// With the lock held: a file that can't be understood is renamed, so that nothing of it is lost.
    Result<void, std::string> setAsideIfDamaged();

    std::filesystem::path m_path;
    Log m_log;
    FileStamp m_stamp;
    OwnedKeyFile m_content;
    std::string m_problem; ///< why the last reading failed
};

} // namespace morvelin
