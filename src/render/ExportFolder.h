// The working place of one export: a temporary folder beside the target that is gone when the export is. Owned by it.
#pragma once

#include <filesystem>

#include "core/base/Identity.h"
#include "core/base/Result.h"
#include "render/ExportError.h"

namespace morvelin {

/// A folder "Morvelin-Export-<UUID>" in the target's folder, so that the finished file takes its place in one step. It
/// is locked while its export lives; folders of exports that were killed are recognised by that and removed.
class ExportFolder {
public:
    /// `target` is absolute. Checks that it can be written, sweeps what dead exports left beside it, and makes the folder.
    static Result<ExportFolder, ExportError> create(const std::filesystem::path& target, IdSource& ids);

    ExportFolder(ExportFolder&& other) noexcept;
    ExportFolder& operator=(ExportFolder&&) = delete;
    ~ExportFolder();

    /// Where the unfinished file is written.
    [[nodiscard]] std::filesystem::path file() const { return m_folder / m_target.filename(); }
    /// Moves the finished file to the target; one that is there is replaced.
    Result<void, ExportError> takePlace();

private:
    ExportFolder(std::filesystem::path target, std::filesystem::path folder, int lock)
        : m_target(std::move(target)),
          m_folder(std::move(folder)),
          m_lock(lock) {}

    std::filesystem::path m_target;
    std::filesystem::path m_folder;
    int m_lock = -1; ///< a descriptor of the folder, held under an exclusive `flock`
};

} // namespace morvelin
