#include "storage/RecentProjectsStore.h"

#include <algorithm>
#include <cerrno>

#include "core/base/Text.h"
#include "storage/BundleFiles.h"
#include "storage/HeaderText.h"
#include "storage/OpenFolder.h"

namespace morvelin {

namespace fs = std::filesystem;

/// The part of `capture.json` or `metadata.json` that a list reads.
struct RecentProjectsStore::Header {
    std::string name;
    Date createdAt;
    std::optional<RecordingKind> recordingKind;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, RecentProjectsStore::Header>& header) {
    fields.required("name", header.name);
    fields.required("createdAt", header.createdAt);
    fields.optional("recordingKind", header.recordingKind);
}

namespace {

using Header = RecentProjectsStore::Header;

/// How takes of Talk mode were named before headers told the kind.
constexpr std::string_view kTalkModePrefix = "Talk mode ";

std::optional<Header> readHeader(const OpenFolder& library, const std::string& bundleName) {
    auto file = library.read(bundleName + '/' + ProjectBundle::kCaptureFile);
    if (!file && file.error() == ENOENT) file = library.read(bundleName + '/' + ProjectBundle::kLegacyMetadataFile);
    if (!file) return std::nullopt;
    auto header = ProjectBundle::decodeHeader<Header>(file->text);
    if (!header) return std::nullopt;
    return std::move(*header);
}

std::optional<RecordingKind> kindOf(const Header& header) {
    if (!header.recordingKind && header.name.starts_with(kTalkModePrefix)) return RecordingKind::TalkMode;
    return header.recordingKind;
}

std::optional<RecentProject> entryIn(const OpenFolder& library, const fs::path& bundleURL) {
    const std::string name = bundleURL.filename();
    // A file of that name has no recording below it.
    if (!ProjectBundle::hasBundleExtension(name) ||
        !library.status((name + '/' + ProjectBundle::kRecordingFile).c_str()))
        return std::nullopt;
    const auto header = readHeader(library, name);
    if (!header) return std::nullopt;
    std::string title = trimmed(header->name);
    if (title.empty()) title = bundleURL.stem().string();
    return RecentProject{bundleURL, std::move(title), header->createdAt, kindOf(*header)};
}

} // namespace

Result<std::vector<RecentProject>, FileError> RecentProjectsStore::list() const {
    const OpenFolder library(m_folder);
    std::vector<RecentProject> projects;
    const int error = library.forEachEntry([&](const char* name) {
        if (auto project = entryIn(library, m_folder / name)) projects.push_back(std::move(*project));
    });
    if (error != 0) return failure(FileError{FileError::Operation::Read, m_folder, error});
    std::ranges::sort(projects, [](const RecentProject& a, const RecentProject& b) {
        return a.createdAt != b.createdAt ? a.createdAt > b.createdAt : a.bundleURL < b.bundleURL;
    });
    return projects;
}

std::optional<RecentProject> RecentProjectsStore::entry(const fs::path& bundleURL) {
    return entryIn(OpenFolder(bundleURL.parent_path()), bundleURL);
}

} // namespace morvelin
