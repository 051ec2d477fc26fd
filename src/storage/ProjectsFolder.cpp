#include "storage/ProjectsFolder.h"

#include <algorithm>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "core/base/Parallel.h"
#include "storage/BundleFiles.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

Date dateOf(const timespec& time) {
    using namespace std::chrono;
    return Date{sys_time<milliseconds>(duration_cast<milliseconds>(seconds(time.tv_sec) + nanoseconds(time.tv_nsec)))};
}

/// An open folder, whose entries are asked about without spelling their whole path: a library has thousands.
class Folder {
public:
    explicit Folder(const fs::path& path) : m_stream(::opendir(path.c_str())) {}
    Folder(const Folder& parent, const std::string& name) : m_stream(parent.openFolder(name.c_str())) {}
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() {
        if (m_stream != nullptr) ::closedir(m_stream);
    }

    /// The next entry's name, null after the last.
    [[nodiscard]] const char* next() {
        const dirent* entry = m_stream != nullptr ? ::readdir(m_stream) : nullptr;
        return entry != nullptr ? entry->d_name : nullptr;
    }

    /// Of what lies at a path below this folder.
    [[nodiscard]] std::optional<struct stat> status(const std::string& path) const {
        struct stat found {};
        if (m_stream == nullptr || ::fstatat(::dirfd(m_stream), path.c_str(), &found, 0) != 0) return std::nullopt;
        return found;
    }

private:
    [[nodiscard]] DIR* openFolder(const char* name) const {
        if (m_stream == nullptr) return nullptr;
        const int descriptor = ::openat(::dirfd(m_stream), name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        return descriptor >= 0 ? ::fdopendir(descriptor) : nullptr;
    }

    DIR* m_stream;
};

/// The newest of what edits touch; a bundle without any of it counts as changed when its folder was. Nothing where no
/// folder lies.
std::optional<Date> modificationDate(const Folder& library, const std::string& bundleName) {
    std::optional<Date> newest;
    const auto consider = [&](const std::optional<struct stat>& file) {
        if (file) newest = std::max(newest.value_or(Date{}), dateOf(file->st_mtim));
    };
    consider(library.status(bundleName + '/' + ProjectBundle::kCaptureFile));
    Folder versions(library, bundleName + '/' + ProjectBundle::kVersionsFolder);
    while (const char* name = versions.next())
        if (*name != '.') consider(versions.status(name));
    if (newest) return newest;
    const auto folder = library.status(bundleName);
    if (folder && S_ISDIR(folder->st_mode)) newest = dateOf(folder->st_mtim);
    return newest;
}

struct Bundle {
    std::string name;
    std::optional<Date> modified;
};

} // namespace

std::vector<ProjectsFolder::Entry> ProjectsFolder::byModification() const {
    Folder library(m_folder);
    std::vector<Bundle> bundles;
    while (const char* name = library.next())
        if (*name != '.' && ProjectBundle::hasBundleExtension(name)) bundles.push_back({name, {}});
    inParallel(bundles.size(),
               [&](std::size_t i) { bundles[i].modified = modificationDate(library, bundles[i].name); });
    std::erase_if(bundles, [](const Bundle& bundle) { return !bundle.modified; });
    std::ranges::sort(bundles, [](const Bundle& a, const Bundle& b) {
        return a.modified != b.modified ? a.modified > b.modified : a.name < b.name;
    });
    std::vector<Entry> entries;
    entries.reserve(bundles.size());
    for (const Bundle& bundle : bundles) entries.push_back({m_folder / bundle.name, *bundle.modified});
    return entries;
}

std::optional<fs::path> ProjectsFolder::lastModified() const {
    std::vector<Entry> entries = byModification();
    if (entries.empty()) return std::nullopt;
    return std::move(entries.front().bundleURL);
}

std::optional<fs::path> ProjectsFolder::find(const std::string& pathOrName, const fs::path& home) const {
    const fs::path path = expandingTilde(pathOrName, home);
    std::error_code error;
    if (fs::exists(path, error)) return fs::absolute(path, error).lexically_normal();
    if (ProjectBundle::hasBundleExtension(pathOrName) && !path.has_parent_path()) return named(path.stem());
    return named(pathOrName);
}

std::optional<fs::path> ProjectsFolder::named(const std::string& name) const {
    if (name.empty() || name.find('/') != std::string::npos) return std::nullopt;
    const fs::path path = m_folder / (name + ProjectBundle::kExtension);
    std::error_code error;
    return fs::is_directory(path, error) ? std::optional(path) : std::nullopt;
}

fs::path expandingTilde(const std::string& path, const fs::path& home) {
    if (path == "~") return home;
    return path.starts_with("~/") ? home / path.substr(2) : fs::path(path);
}

} // namespace morvelin
