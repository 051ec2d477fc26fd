#include "storage/RecentProjectsStore.h"

#include <algorithm>
#include <cerrno>

#include "core/base/Text.h"
#include "storage/BundleFiles.h"

namespace morvelin {

namespace fs = std::filesystem;

/// The part of `capture.json` or `metadata.json` that a list reads.
struct RecentProjectHeader {
    std::string name;
    Date createdAt;
    std::optional<RecordingKind> recordingKind;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, RecentProjectHeader>& header) {
    fields.required("name", header.name);
    fields.required("createdAt", header.createdAt);
    fields.optional("recordingKind", header.recordingKind);
}

namespace {

/// How takes of Talk mode were named before headers told the kind.
constexpr std::string_view kTalkModePrefix = "Talk mode ";

std::optional<RecentProjectHeader> readHeader(const fs::path& bundleURL) {
    auto text = readFile(bundleURL / ProjectBundle::kCaptureFile);
    if (!text && text.error().code == ENOENT) text = readFile(bundleURL / ProjectBundle::kLegacyMetadataFile);
    if (!text) return std::nullopt;
    auto header = decode<RecentProjectHeader>(*text);
    if (!header) return std::nullopt;
    return std::move(*header);
}

std::optional<RecordingKind> kindOf(const RecentProjectHeader& header) {
    if (!header.recordingKind && header.name.starts_with(kTalkModePrefix)) return RecordingKind::TalkMode;
    return header.recordingKind;
}

} // namespace

Result<std::vector<RecentProject>, FileError> RecentProjectsStore::list() const {
    std::error_code error;
    std::vector<RecentProject> projects;
    for (fs::directory_iterator item(m_folder, error), end; !error && item != end; item.increment(error))
        if (auto project = entry(item->path())) projects.push_back(std::move(*project));
    if (error) return failure(FileError{FileError::Operation::Read, m_folder, error.value()});
    std::ranges::sort(projects, [](const RecentProject& a, const RecentProject& b) {
        return a.createdAt != b.createdAt ? a.createdAt > b.createdAt : a.bundleURL < b.bundleURL;
    });
    return projects;
}

std::optional<RecentProject> RecentProjectsStore::entry(const fs::path& bundleURL) {
    // A file of that name has no recording below it.
    if (!ProjectBundle::hasBundleExtension(bundleURL.filename().native()) ||
        !ProjectBundle::isPresent(bundleURL / ProjectBundle::kRecordingFile))
        return std::nullopt;
    const auto header = readHeader(bundleURL);
    if (!header) return std::nullopt;
    std::string title = trimmed(header->name);
    if (title.empty()) title = bundleURL.stem().string();
    return RecentProject{bundleURL, std::move(title), header->createdAt, kindOf(*header)};
}

} // namespace morvelin
