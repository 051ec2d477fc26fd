// A group of writes that counts as a whole or not at all; owned by the operation that writes.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace morvelin::ProjectBundle {

/// Remembers what lay at each path before it is written, and brings that back unless the group is kept.
class FolderChanges {
public:
    FolderChanges() = default;
    FolderChanges(const FolderChanges&) = delete;
    FolderChanges& operator=(const FolderChanges&) = delete;
    ~FolderChanges();

    /// To be called before the file or folder is made or written.
    void remember(const std::filesystem::path& path);
    /// The writes so far are final.
    void keep() { m_before.clear(); }

private:
    struct Before {
        std::filesystem::path path;
        std::optional<std::string> content; ///< absent where there was nothing
    };

    std::vector<Before> m_before;
};

} // namespace morvelin::ProjectBundle
