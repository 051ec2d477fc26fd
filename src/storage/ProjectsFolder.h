// The user's library of projects: a folder of bundles, found by path, by name, or as the one that changed last.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/base/Date.h"

namespace morvelin {

/// A view of the folder; holds nothing but its path. A folder that isn't there is an empty one.
class ProjectsFolder {
public:
    struct Entry {
        std::string bundleName;            ///< with its extension
        Date modified;                     ///< the newest change of the header or a version
        std::optional<std::string> header; ///< the text of `capture.json`, where it was read

        /// What agents call the project: the folder's name without the extension.
        [[nodiscard]] std::string name() const;
    };

    explicit ProjectsFolder(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    [[nodiscard]] const std::filesystem::path& path() const { return m_folder; }

    /// Every bundle, the one that changed last first; bundles of equal time by ascending path. That many of the first have
    /// their headers read along.
    [[nodiscard]] std::vector<Entry> byModification(std::size_t headers = 0) const;
    [[nodiscard]] std::filesystem::path bundleURL(const Entry& entry) const { return m_folder / entry.bundleName; }
    [[nodiscard]] std::optional<std::filesystem::path> lastModified() const;

    /// The project that a person or an agent names: a path, with `~` for `home`, or the name of one in this folder.
    [[nodiscard]] std::optional<std::filesystem::path> find(const std::string& pathOrName,
                                                            const std::filesystem::path& home) const;
    /// `<folder>/<name>.morvelin`, if it is there.
    [[nodiscard]] std::optional<std::filesystem::path> named(const std::string& name) const;

private:
    std::filesystem::path m_folder;
};

/// The path with a leading `~` replaced by the home folder.
[[nodiscard]] std::filesystem::path expandingTilde(const std::string& path, const std::filesystem::path& home);

} // namespace morvelin
