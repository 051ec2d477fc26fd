#include "storage/ProjectsFolder.h"

#include <algorithm>

#include "core/base/Parallel.h"
#include "storage/BundleFiles.h"
#include "storage/OpenFolder.h"
#include "storage/ProjectBundle.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

Date dateOf(const timespec& time) {
    using namespace std::chrono;
    return Date{sys_time<milliseconds>(duration_cast<milliseconds>(seconds(time.tv_sec) + nanoseconds(time.tv_nsec)))};
}

std::string below(std::string_view folder, std::string_view file) {
    std::string path;
    path.reserve(folder.size() + 1 + file.size());
    return path.append(folder).append("/").append(file);
}

/// The newest of what edits touch; a bundle without any of it counts as changed when its folder was. Nothing where no
/// folder lies.
std::optional<Date> modificationDate(const OpenFolder& library, const std::string& bundleName,
                                     const std::optional<struct stat>& header) {
    std::optional<Date> newest;
    const auto consider = [&](const std::optional<struct stat>& file) {
        if (file) newest = std::max(newest.value_or(Date{}), dateOf(file->st_mtim));
    };
    consider(header);
    const OpenFolder versions(library, below(bundleName, ProjectBundle::kVersionsFolder));
    (void)versions.forEachEntry([&](const char* name) {
        if (*name != '.') consider(versions.status(name));
    });
    if (newest) return newest;
    const auto folder = library.status(bundleName.c_str());
    if (folder && S_ISDIR(folder->st_mode)) newest = dateOf(folder->st_mtim);
    return newest;
}

struct Bundle {
    std::string name;
    std::optional<Date> modified;
    std::optional<std::string> header;

    [[nodiscard]] std::string headerFile() const { return below(name, ProjectBundle::kCaptureFile); }

    /// Gives the file's status, which comes with the reading for nothing.
    std::optional<struct stat> readHeader(const OpenFolder& library) {
        auto file = library.read(headerFile());
        if (!file) return std::nullopt;
        header = std::move(file->text);
        return file->status;
    }
};

bool isMoreRecent(const Bundle& a, const Bundle& b) {
    return a.modified != b.modified ? a.modified > b.modified : a.name < b.name;
}

/// In no order. Headers are read along where all of them are wanted.
std::vector<Bundle> bundlesIn(const OpenFolder& library, std::size_t headers) {
    std::vector<Bundle> bundles;
    (void)library.forEachEntry([&](const char* name) {
        if (*name != '.' && ProjectBundle::hasBundleExtension(name)) bundles.push_back({name, {}, {}});
    });
    const bool readAll = headers >= bundles.size();
    inParallel(bundles.size(), [&](std::size_t i) {
        Bundle& bundle = bundles[i];
        std::optional<struct stat> header;
        if (readAll) header = bundle.readHeader(library);
        if (!header) header = library.status(bundle.headerFile().c_str());
        bundle.modified = modificationDate(library, bundle.name, header);
    });
    std::erase_if(bundles, [](const Bundle& bundle) { return !bundle.modified; });
    return bundles;
}

} // namespace

std::string ProjectsFolder::Entry::name() const {
    return bundleName.substr(0, bundleName.size() - std::string_view(ProjectBundle::kExtension).size());
}

std::vector<ProjectsFolder::Entry> ProjectsFolder::byModification(std::size_t headers) const {
    const OpenFolder library(m_folder);
    std::vector<Bundle> bundles = bundlesIn(library, headers);
    std::ranges::sort(bundles, isMoreRecent);
    inParallel(std::min(headers, bundles.size()), [&](std::size_t i) {
        if (!bundles[i].header) (void)bundles[i].readHeader(library);
    });
    std::vector<Entry> entries;
    entries.reserve(bundles.size());
    for (Bundle& each : bundles) entries.push_back({std::move(each.name), *each.modified, std::move(each.header)});
    return entries;
}

std::optional<fs::path> ProjectsFolder::lastModified() const {
    const std::vector<Bundle> bundles = bundlesIn(OpenFolder(m_folder), 0);
    const auto last = std::ranges::min_element(bundles, isMoreRecent);
    if (last == bundles.end()) return std::nullopt;
    return m_folder / last->name;
}

std::optional<fs::path> ProjectsFolder::find(const std::string& pathOrName, const fs::path& home) const {
    const fs::path path = expandingTilde(pathOrName, home);
    std::error_code error;
    if (fs::exists(path, error)) return ProjectBundle::normalized(path);
    if (ProjectBundle::hasBundleExtension(pathOrName)) return named(fs::path(pathOrName).replace_extension());
    return named(pathOrName);
}

std::optional<fs::path> ProjectsFolder::named(const std::string& name) const {
    if (name.empty() || name.find('/') != std::string::npos) return std::nullopt;
    const fs::path path = m_folder / (name + ProjectBundle::kExtension);
    std::error_code error;
    if (fs::is_directory(path, error)) return path;
    // A list shows a project whose extension is written in capitals, too.
    std::optional<fs::path> found;
    (void)OpenFolder(m_folder).forEachEntry([&](const char* entry) {
        const fs::path each = m_folder / entry;
        if (ProjectBundle::hasBundleExtension(entry) && each.stem() == name && fs::is_directory(each, error))
            found = each;
    });
    return found;
}

fs::path expandingTilde(const std::string& path, const fs::path& home) {
    if (path == "~") return home;
    return path.starts_with("~/") ? home / path.substr(2) : fs::path(path);
}

} // namespace morvelin
