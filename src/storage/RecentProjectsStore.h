// The projects folder as a list of light records: there is no database, a project is known by its folder alone.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/ProjectVersion.h"
#include "core/base/Date.h"
#include "core/base/Files.h"
#include "core/base/JSON.h"
#include "core/base/Result.h"

namespace morvelin {

/// A project as a picker shows it. Its identity is where it lies.
struct RecentProject {
    std::filesystem::path bundleURL;
    std::string title;
    Date createdAt;
    std::optional<RecordingKind> kind;

    bool operator==(const RecentProject&) const = default;
};

/// Reads the folder anew each time; from any thread, since it holds nothing but the folder's path.
class RecentProjectsStore {
public:
    struct Header;

    explicit RecentProjectsStore(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    [[nodiscard]] const std::filesystem::path& folder() const { return m_folder; }

    /// All projects, the newest first; those of one date by path. What is no project is skipped without a word.
    [[nodiscard]] Result<std::vector<RecentProject>, FileError> list() const;
    /// Nothing where there is no project.
    [[nodiscard]] static std::optional<RecentProject> entry(const std::filesystem::path& bundleURL);

private:
    std::filesystem::path m_folder;
};

} // namespace morvelin
