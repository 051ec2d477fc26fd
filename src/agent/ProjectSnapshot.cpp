#include "agent/ProjectSnapshot.h"

#include <algorithm>

#include <sys/stat.h>

#include "storage/BundleFiles.h"
#include "storage/TranscriptFile.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

/// Agents work on one or two projects at a time.
constexpr std::size_t kKeptProjects = 4;

ProjectSnapshot takeSnapshot(const fs::path& bundleURL, ProjectBundle::Contents contents, const Log& log) {
    ProjectSnapshot snapshot;
    snapshot.bundleURL = bundleURL;
    snapshot.originalDuration = contents.capture.originalDuration;
    snapshot.createdAt = contents.capture.createdAt;
    snapshot.versions = std::move(contents.versions);
    snapshot.currentVersionID = contents.currentVersionID;
    for (ProjectVersion& version : snapshot.versions)
        if (version.id != snapshot.currentVersionID) version.edit = {};
    std::ranges::copy_if(contents.cursorEvents, std::back_inserter(snapshot.presses),
                         [](const CursorEvent& event) { return event.event == CursorEventType::MouseDown; });
    snapshot.transcript = ProjectBundle::readTranscript(bundleURL);
    snapshot.narration = NarrationLibrary::load(bundleURL, log);
    snapshot.hasCamera = contents.cameraURL.has_value();
    snapshot.isCursorDrawn = ProjectBundle::isPresent(bundleURL / ProjectBundle::kCursorShapesFile);
    return snapshot;
}

} // namespace

const ProjectVersion& ProjectSnapshot::currentVersion() const {
    return *std::ranges::find(versions, currentVersionID, &ProjectVersion::id);
}

Result<std::shared_ptr<const ProjectSnapshot>, ProjectBundle::BundleError> ProjectSnapshots::read(
    const fs::path& bundleURL) {
    if (const auto kept = m_kept.find(bundleURL); kept != m_kept.end()) {
        const auto isUnchanged = [](const FileState& state) { return stateOf(state.file) == state; };
        if (std::ranges::all_of(kept->second.files, isUnchanged)) {
            kept->second.lastUse = ++m_uses;
            return kept->second.snapshot;
        }
        m_kept.erase(kept);
    }

    // The states are taken first: a write that falls between is then seen as a change the next time.
    std::vector<FileState> before = statesOf(bundleURL);
    auto contents = ProjectBundle::load(bundleURL, m_services);
    if (!contents) return passOn(std::move(contents));
    auto snapshot = std::make_shared<const ProjectSnapshot>(
        takeSnapshot(bundleURL, std::move(*contents), m_services.log));
    m_kept.insert_or_assign(bundleURL, Kept{std::move(before), snapshot, ++m_uses});
    forgetOldest();
    return snapshot;
}

ProjectSnapshots::FileState ProjectSnapshots::stateOf(const fs::path& file) {
    struct stat found {};
    if (::stat(file.c_str(), &found) != 0) return {file};
    return {file,         true,          found.st_dev,
            found.st_ino, found.st_size, found.st_mtim.tv_sec * 1'000'000'000LL + found.st_mtim.tv_nsec};
}

std::vector<ProjectSnapshots::FileState> ProjectSnapshots::statesOf(const fs::path& bundleURL) {
    std::vector<FileState> states;
    // The folders tell of files that come and go.
    for (const char* name :
         {"", ProjectBundle::kCaptureFile, ProjectBundle::kCursorEventsFile, ProjectBundle::kTranscriptFile,
          kNarrationFile, kNarrationFolder, ProjectBundle::kVersionsFolder})
        states.push_back(stateOf(*name != '\0' ? bundleURL / name : bundleURL));
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(bundleURL / ProjectBundle::kVersionsFolder, error))
        states.push_back(stateOf(entry.path()));
    return states;
}

void ProjectSnapshots::forgetOldest() {
    if (m_kept.size() <= kKeptProjects) return;
    m_kept.erase(std::ranges::min_element(m_kept, {}, [](const auto& kept) { return kept.second.lastUse; }));
}

} // namespace morvelin
