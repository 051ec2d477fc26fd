#include "capture/TakeFolder.h"

#include <cerrno>

#include <fmt/format.h>

#include "storage/BundleFiles.h"
#include "storage/ProjectBundle.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

constexpr const char* kTakeExtension = ".take";
/// For the moment in which a folder is there and not yet locked; others hold this lock no longer than that.
constexpr Seconds kPatience{10};

/// Keeps programs apart that begin a take or look for abandoned ones. Nothing where it can't be had, which must not
/// keep anyone from recording.
std::optional<AdvisoryLock> lockLibrary(const fs::path& projectsFolder) {
    auto lock = AdvisoryLock::take(projectsFolder, AdvisoryLock::Target::Folder, kPatience);
    return lock ? std::move(*lock) : std::nullopt;
}

std::optional<AdvisoryLock> lockTake(const fs::path& folder) {
    auto lock = AdvisoryLock::attempt(folder, AdvisoryLock::Target::Folder);
    return lock ? std::move(*lock) : std::nullopt;
}

fs::path freePath(const fs::path& projectsFolder, const std::string& stem) {
    std::error_code ignored;
    for (int number = 1;; ++number) {
        const std::string numbered = number == 1 ? stem : fmt::format("{} {}", stem, number);
        const fs::path folder = projectsFolder / (numbered + kTakeExtension);
        if (!fs::exists(folder, ignored) &&
            !fs::exists(projectsFolder / (numbered + ProjectBundle::kExtension), ignored))
            return folder;
    }
}

} // namespace

Result<TakeFolder, FileError> TakeFolder::create(const fs::path& projectsFolder, const std::string& name) {
    if (auto made = createFolder(projectsFolder); !made) return passOn(std::move(made));
    const auto library = lockLibrary(projectsFolder);
    const fs::path folder = freePath(projectsFolder, ProjectBundle::folderName(name));
    if (auto made = createFolder(folder); !made) return passOn(std::move(made));
    auto lock = lockTake(folder);
    if (!lock) return failure(FileError{FileError::Operation::CreateFolder, folder, EWOULDBLOCK});
    return TakeFolder(folder, std::move(*lock));
}

std::vector<TakeFolder> TakeFolder::abandoned(const fs::path& projectsFolder) {
    std::vector<fs::path> folders;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(projectsFolder, error))
        if (entry.path().extension() == kTakeExtension && entry.is_directory(error)) folders.push_back(entry.path());
    if (folders.empty()) return {};
    std::ranges::sort(folders);

    const auto library = lockLibrary(projectsFolder);
    if (!library) return {};
    std::vector<TakeFolder> found;
    for (fs::path& folder : folders)
        if (auto lock = lockTake(folder)) found.push_back(TakeFolder(std::move(folder), std::move(*lock)));
    return found;
}

fs::path TakeFolder::bundleURL() const {
    return m_path.parent_path() / (m_path.stem().string() + ProjectBundle::kExtension);
}

std::int64_t TakeFolder::size() const {
    std::int64_t bytes = 0;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_path, error))
        if (const auto size = entry.file_size(error); !error) bytes += static_cast<std::int64_t>(size);
    return bytes;
}

void TakeFolder::remove() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

} // namespace morvelin
