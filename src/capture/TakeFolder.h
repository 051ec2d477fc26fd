// The place where a take lies while it runs: its movie, its journal. Owned by the take, or by the recovery of one that no
// program owns any more.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/base/AdvisoryLock.h"
#include "core/base/Files.h"
#include "core/base/Result.h"

namespace morvelin {

/// `<name>.take` beside the projects. A lock on the folder tells that a program works in it; it goes with the object or
/// the process, however that ends.
class TakeFolder {
public:
    /// Makes the folder, and the one for projects where that is missing. No project and no other take has its name.
    static Result<TakeFolder, FileError> create(const std::filesystem::path& projectsFolder, const std::string& name);
    /// The takes that no running program works on.
    static std::vector<TakeFolder> abandoned(const std::filesystem::path& projectsFolder);

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }
    [[nodiscard]] std::filesystem::path movie() const { return m_path / "recording.mov"; }
    [[nodiscard]] std::filesystem::path camera() const { return m_path / "camera.mov"; }
    [[nodiscard]] std::filesystem::path header() const { return m_path / "take.json"; }
    [[nodiscard]] std::filesystem::path journal() const { return m_path / "journal.jsonl"; }
    /// Where the take's project goes.
    [[nodiscard]] std::filesystem::path bundleURL() const;
    /// Bytes of all that is in it.
    [[nodiscard]] std::int64_t size() const;

    /// Removes the folder with all that is still in it.
    void remove();

private:
    TakeFolder(std::filesystem::path path, AdvisoryLock lock) : m_path(std::move(path)), m_lock(std::move(lock)) {}

    std::filesystem::path m_path;
    AdvisoryLock m_lock;
};

} // namespace morvelin
