#include "agent/ProjectSnapshot.h"

#include <algorithm>

#include "storage/BundleFiles.h"
#include "storage/OpenedProject.h"
#include "storage/TranscriptFile.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

/// Agents work on one or two projects at a time.
constexpr std::size_t kKeptProjects = 4;

ProjectSnapshot takeSnapshot(const fs::path& bundleURL, ProjectBundle::Contents contents,
                             const ProjectBundle::Services& services) {
    ProjectSnapshot snapshot;
    snapshot.project = ProjectBundle::openedProject(bundleURL, contents, services.ids);
    for (ProjectVersion& version : contents.versions)
        if (version.id != contents.currentVersionID) version.edit = {};
    std::ranges::copy_if(contents.cursorEvents, std::back_inserter(snapshot.presses),
                         [](const CursorEvent& event) { return event.event == CursorEventType::MouseDown; });
    snapshot.transcript = ProjectBundle::readTranscript(bundleURL);
    snapshot.narration = NarrationLibrary::load(bundleURL, services.log);
    snapshot.isCursorDrawn = ProjectBundle::isPresent(bundleURL / ProjectBundle::kCursorShapesFile);
    snapshot.contents = std::move(contents);
    return snapshot;
}

} // namespace

Result<std::shared_ptr<const ProjectSnapshot>, ProjectBundle::BundleError> ProjectSnapshots::read(
    const fs::path& bundleURL) {
    if (const auto kept = m_kept.find(bundleURL); kept != m_kept.end()) {
        if (std::ranges::all_of(kept->second.files, &FileState::isCurrent)) {
            kept->second.lastUse = ++m_uses;
            return kept->second.snapshot;
        }
        m_kept.erase(kept);
    }

    // The states are taken first: a write that falls between is then seen as a change the next time.
    std::vector<FileState> before = statesOf(bundleURL);
    auto contents = ProjectBundle::load(bundleURL, m_services);
    if (!contents) return passOn(std::move(contents));
    auto snapshot = std::make_shared<const ProjectSnapshot>(takeSnapshot(bundleURL, std::move(*contents), m_services));
    m_kept.insert_or_assign(bundleURL, Kept{std::move(before), snapshot, ++m_uses});
    forgetOldest();
    return snapshot;
}

std::vector<FileState> ProjectSnapshots::statesOf(const fs::path& bundleURL) {
    std::vector<FileState> states;
    // The folders tell of files that come and go.
    for (const char* name :
         {"", ProjectBundle::kCaptureFile, ProjectBundle::kCursorEventsFile, ProjectBundle::kTranscriptFile,
          kNarrationFile, kNarrationFolder, ProjectBundle::kVersionsFolder})
        states.push_back(FileState::of(*name != '\0' ? bundleURL / name : bundleURL));
    std::error_code error;
    for (fs::directory_iterator file(bundleURL / ProjectBundle::kVersionsFolder, error), end; !error && file != end;
         file.increment(error))
        states.push_back(FileState::of(file->path()));
    return states;
}

void ProjectSnapshots::forgetOldest() {
    if (m_kept.size() <= kKeptProjects) return;
    m_kept.erase(std::ranges::min_element(m_kept, {}, [](const auto& kept) { return kept.second.lastUse; }));
}

} // namespace morvelin
