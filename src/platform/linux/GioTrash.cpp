#include "platform/linux/GioTrash.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "platform/linux/GLibHandles.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

/// What stays the same when an item gets another name on its file system.
struct FileIdentity {
    dev_t device;
    ino_t inode;

    bool operator==(const FileIdentity&) const = default;
};

std::optional<FileIdentity> identityOf(const fs::path& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino};
}

/// The Trash folders that an item can go to: the user's own, and one at the top of each file system on the way up.
std::vector<fs::path> trashFoldersFor(const fs::path& item) {
    std::vector<fs::path> folders{fs::path(g_get_user_data_dir()) / "Trash"};
    const std::string user = std::to_string(::getuid());
    for (fs::path folder = item.parent_path();; folder = folder.parent_path()) {
        folders.push_back(folder / ".Trash" / user);
        folders.push_back(folder / (".Trash-" + user));
        if (folder == folder.root_path() || folder.empty()) return folders;
    }
}

/// The item among those of a Trash folder. Its name there may have a numeral, but it is still the same file.
std::optional<fs::path> findIn(const fs::path& trash, const FileIdentity& identity) {
    std::error_code error;
    for (fs::directory_iterator entry(trash / "files", error), end; !error && entry != end; entry.increment(error))
        if (identityOf(entry->path()) == identity) return entry->path();
    return std::nullopt;
}

std::string sentence(const fs::path& item, std::string_view reason) {
    return fmt::format("“{}” could not be moved to the Trash: {}{}", item.filename().string(), reason,
                       reason.ends_with('.') ? "" : ".");
}

} // namespace

Result<std::optional<fs::path>, std::string> GioTrash::moveToTrash(const fs::path& item) {
    std::error_code error;
    fs::path whole = fs::absolute(item, error).lexically_normal();
    if (!whole.has_filename()) whole = whole.parent_path();
    const auto identity = identityOf(whole);
    if (!identity) return failure(sentence(whole, std::strerror(errno)));

    const OwnedObject<GFile> file(g_file_new_for_path(whole.c_str()));
    GError* refused = nullptr;
    if (!g_file_trash(file.get(), nullptr, &refused)) return failure(sentence(whole, OwnedError(refused)->message));
    for (const fs::path& trash : trashFoldersFor(whole))
        if (auto found = findIn(trash, *identity)) return found;
    return std::nullopt;
}

} // namespace morvelin
