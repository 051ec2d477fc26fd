#include "storage/DuplicateProject.h"

#include <cerrno>

#include <unistd.h>

#include <fmt/format.h>

#include "core/base/AdvisoryLock.h"
#include "core/base/CopyFolder.h"
#include "core/base/Text.h"
#include "storage/BundleFiles.h"
#include "storage/ProjectBundle.h"

namespace morvelin::ProjectBundle {

namespace fs = std::filesystem;

namespace {

/// Hidden, and without the extension of a project, so that no list shows it.
constexpr std::string_view kWorkshopPrefix = ".morvelin-copy-";

/// A hidden folder that the copy is made in; its lock tells others that somebody is at work. Gone at the end.
class Workshop {
public:
    static Result<Workshop, BundleError> open(const fs::path& folder) {
        for (int number = 0;; ++number) {
            fs::path path = folder / fmt::format("{}{}-{}", kWorkshopPrefix, ::getpid(), number);
            std::error_code error;
            if (!fs::create_directory(path, error)) {
                if (!error) continue;
                return failure(BundleError(FileError{FileError::Operation::CreateFolder, path, error.value()}));
            }
            auto lock = AdvisoryLock::attempt(path, AdvisoryLock::Target::Folder);
            if (!lock && lock.error().code != ENOENT) return passOn(std::move(lock));
            if (lock && *lock) return Workshop(std::move(path), std::move(**lock));
            // Between making and locking it another copy has taken it for a dead one's.
        }
    }
    Workshop(Workshop&& other) noexcept : m_path(std::exchange(other.m_path, {})), m_lock(std::move(other.m_lock)) {}
    ~Workshop() {
        std::error_code ignored;
        if (!m_path.empty()) fs::remove_all(m_path, ignored);
    }

    [[nodiscard]] fs::path copy() const { return m_path / "copy"; }

private:
    Workshop(fs::path path, AdvisoryLock lock) : m_path(std::move(path)), m_lock(std::move(lock)) {}

    fs::path m_path;
    AdvisoryLock m_lock;
};

/// Removes the workshops whose process has died.
void removeAbandonedWorkshops(const fs::path& folder) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (!entry->path().filename().string().starts_with(kWorkshopPrefix)) continue;
        const auto lock = AdvisoryLock::attempt(entry->path(), AdvisoryLock::Target::Folder);
        std::error_code ignored;
        if (lock && *lock) fs::remove_all(entry->path(), ignored);
    }
}

/// The file with a project's name, in the present format or the older one.
fs::path headerFile(const fs::path& bundleURL) {
    const fs::path capture = bundleURL / kCaptureFile;
    return isPresent(capture) ? capture : bundleURL / kLegacyMetadataFile;
}

/// The header as it stands: what a newer program has put into it goes along.
Result<JSONValue, BundleError> readHeader(const fs::path& file) {
    auto header = readRecord<JSONValue>(file);
    if (header && !header->is_object())
        return failure(BundleError(BundleError::Undecodable{file, json::wrongType("an object", *header)}));
    return header;
}

std::string nameOf(const std::string& wanted, const JSONValue& header, const fs::path& bundleURL) {
    std::string name = trimmed(wanted);
    if (!name.empty()) return name;
    const auto present = header.find("name");
    const bool isNamed = present != header.end() && present->is_string();
    return (isNamed ? present->get<std::string>() : bundleURL.stem().string()) + " copy";
}

/// Gives the finished copy its place; another program may take the name just before.
Result<fs::path, BundleError> moveIntoPlace(const fs::path& copy, const fs::path& folder, const std::string& name) {
    constexpr int kAttempts = 10;
    for (int attempt = 1;; ++attempt) {
        fs::path target = freeBundleURL(folder, folderName(name), {});
        auto moved = moveItem(copy, target);
        if (moved) return target;
        const int code = moved.error().code;
        if (attempt == kAttempts || (code != EEXIST && code != ENOTEMPTY && code != ENOTDIR))
            return passOn(std::move(moved));
    }
}

} // namespace

Result<fs::path, BundleError> duplicateProject(const fs::path& bundleURL, const std::string& name,
                                               std::stop_token stop) {
    const fs::path source = normalized(bundleURL);
    const fs::path folder = source.parent_path();
    // Before any folder whatever is copied.
    if (!isPresent(headerFile(source))) return failure(BundleError(BundleError::MissingMetadata{}));
    removeAbandonedWorkshops(folder);
    auto workshop = Workshop::open(folder);
    if (!workshop) return passOn(std::move(workshop));
    if (auto copied = copyFolder(source, workshop->copy(), std::move(stop)); !copied) return passOn(std::move(copied));

    const fs::path file = headerFile(workshop->copy());
    auto header = readHeader(file);
    if (!header) return passOn(std::move(header));
    const std::string displayName = nameOf(name, *header, source);
    (*header)["name"] = displayName;
    if (auto written = writeRecord(*header, file); !written) return passOn(std::move(written));
    return moveIntoPlace(workshop->copy(), folder, displayName);
}

} // namespace morvelin::ProjectBundle
