#include "storage/ProjectVersionStore.h"

#include <algorithm>

#include <fmt/format.h>

#include "core/base/Text.h"
#include "narration/AudioTracks.h"
#include "narration/NarrationLibrary.h"
#include "storage/BundleFiles.h"
#include "storage/VersionNames.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

/// Narration belongs to the version that it was made in, not to a new beginning.
void resetNarration(EditPayload& edit) {
    edit.audioTracks = defaultAudioTracks();
    edit.narrationTakeID.reset();
    edit.narrationTakeIDs.reset();
    edit.narrationArrangements.reset();
    edit.captionsSourceID.reset();
}

/// The tracks of takes that the project no longer knows say nothing.
AudioTrackList tracksOfOldVersion(const EditPayload& edit, const NarrationLibrary& library) {
    AudioTrackList tracks = tracksFromOlderFields(
        {edit.narrationTakeID, edit.narrationTakeIDs, edit.narrationArrangements});
    if (library.isUnreadable) return tracks;
    std::erase_if(tracks, [&](const AudioTrackRef& track) { return track.takeID && !library.knows(*track.takeID); });
    return tracks;
}

} // namespace

ProjectVersionStore::ProjectVersionStore(fs::path bundleURL, ProjectBundle::Contents contents,
                                         ProjectBundle::Services services)
    : m_bundleURL(std::move(bundleURL)),
      m_services(std::move(services)),
      m_versions(std::move(contents.versions)),
      m_currentID(contents.currentVersionID),
      m_projectName(contents.capture.name),
      m_capture(std::move(contents.capture)),
      m_unreadableVersionIDs(std::move(contents.unreadableVersionIDs)) {
    bringNarrationUpToDate();
}

const ProjectVersion* ProjectVersionStore::version(const UUID& id) const {
    const auto found = std::ranges::find(m_versions, id, &ProjectVersion::id);
    return found == m_versions.end() ? nullptr : &*found;
}

ProjectVersion* ProjectVersionStore::find(const UUID& id) {
    const auto found = std::ranges::find(m_versions, id, &ProjectVersion::id);
    return found == m_versions.end() ? nullptr : &*found;
}

std::vector<ProjectVersion> ProjectVersionStore::editableVersions() const {
    std::vector<ProjectVersion> editable;
    std::ranges::copy_if(m_versions, std::back_inserter(editable), std::logical_not{}, &ProjectVersion::isInitial);
    return editable;
}

bool ProjectVersionStore::save(const EditPayload& edit, Date date) {
    ProjectVersion* current = find(m_currentID);
    if (!current) return false;
    if (current->edit == edit && !m_unwrittenVersionIDs.contains(m_currentID)) return true;
    current->edit = edit;
    current->updatedAt = ProjectBundle::wholeSeconds(date);
    const bool isWritten = write(*current);
    changed();
    return isWritten;
}

auto ProjectVersionStore::switchTo(const UUID& id, const EditPayload& currentEdit, Date date)
    -> std::optional<SwitchOutcome> {
    if (id == m_currentID || (m_isRecordingNarration && m_isRecordingNarration())) return std::nullopt;
    save(currentEdit, date);
    const ProjectVersion* target = version(id);
    if (!target) return std::nullopt;
    if (target->isInitial) return SwitchOutcome{duplicate(*target, date), true};
    m_currentID = id;
    SwitchOutcome outcome{*target, false};
    saveIndex();
    changed();
    return outcome;
}

ProjectVersion ProjectVersionStore::duplicate(const ProjectVersion& source, Date date) {
    return addCopy(source, nameOfCopy(source, m_versions), date);
}

Result<ProjectVersion, RenameError> ProjectVersionStore::duplicateNamed(const ProjectVersion& source,
                                                                        const std::string& name, Date date) {
    std::string wanted = trimmed(name);
    if (wanted.empty()) return failure(RenameError{RenameError::EmptyName{}});
    if (isVersionNameTaken(wanted, m_versions)) return failure(RenameError{RenameError::DuplicateName{wanted}});
    return addCopy(source, std::move(wanted), date);
}

ProjectVersion ProjectVersionStore::addCopy(ProjectVersion copy, std::string name, Date date) {
    if (copy.isInitial) resetNarration(copy.edit);
    copy.id = m_services.ids.next();
    copy.name = std::move(name);
    copy.isInitial = false;
    copy.createdAt = copy.updatedAt = ProjectBundle::wholeSeconds(date);
    m_versions.push_back(copy);
    m_currentID = copy.id;
    write(copy);
    saveIndex();
    changed();
    return copy;
}

Result<void, RenameError> ProjectVersionStore::rename(const UUID& id, const std::string& name, Date date) {
    std::string wanted = trimmed(name);
    if (wanted.empty()) return failure(RenameError{RenameError::EmptyName{}});
    ProjectVersion* target = find(id);
    if (!target) return {};
    if (target->isInitial) return failure(RenameError{RenameError::InitialVersionIsLocked{}});
    if (isVersionNameTaken(wanted, m_versions, id)) return failure(RenameError{RenameError::DuplicateName{wanted}});
    target->name = std::move(wanted);
    target->updatedAt = ProjectBundle::wholeSeconds(date);
    write(*target);
    changed();
    return {};
}

Result<void, DeleteError> ProjectVersionStore::deleteVersion(const UUID& id) {
    const ProjectVersion* target = version(id);
    if (!target) return failure(DeleteError{DeleteError::Reason::NotFound});
    if (target->isInitial) return failure(DeleteError{DeleteError::Reason::InitialVersionIsLocked});
    if (id == m_currentID) return failure(DeleteError{DeleteError::Reason::IsCurrent});
    const UUID gone = id; // `id` may be the version's own
    std::erase_if(m_versions, [&](const ProjectVersion& each) { return each.id == gone; });
    m_unwrittenVersionIDs.erase(gone);
    saveIndex();
    if (auto removed = ProjectBundle::deleteVersionFile(gone, m_bundleURL); !removed)
        m_services.log("[Morvelin] Could not delete version file: " + removed.error().description());
    changed();
    return {};
}

Result<void, ProjectRenameError> ProjectVersionStore::renameProject(const std::string& name) {
    const std::string wanted = trimmed(name);
    if (wanted.empty() || wanted == m_projectName) return {};
    auto renamed = ProjectBundle::renameBundle(m_bundleURL, wanted);
    if (!renamed) {
        const std::string reason = renamed.error().description();
        m_services.log("[Morvelin] Could not rename project: " + reason);
        return failure(ProjectRenameError{m_projectName, reason});
    }
    m_bundleURL = std::move(*renamed);
    m_projectName = m_capture.name = wanted;
    changed();
    return {};
}

void ProjectVersionStore::bringNarrationUpToDate() {
    if (std::ranges::all_of(m_versions, [](const auto& each) { return each.edit.audioTracks.has_value(); })) return;
    const NarrationLibrary library = NarrationLibrary::load(m_bundleURL, m_services.log);
    for (ProjectVersion& each : m_versions) {
        if (each.edit.audioTracks) continue;
        each.edit.audioTracks = tracksOfOldVersion(each.edit, library);
        write(each);
    }
}

bool ProjectVersionStore::write(const ProjectVersion& version) {
    m_unwrittenVersionIDs.insert(version.id);
    // A project that was deleted behind the program's back must not reappear.
    if (!ProjectBundle::isPresent(m_bundleURL / ProjectBundle::kCaptureFile)) {
        m_services.log(fmt::format("[Morvelin] Not saving version “{}”: the project is gone from {}", version.name,
                                   m_bundleURL.string()));
        return false;
    }
    if (auto written = ProjectBundle::writeVersion(version, m_bundleURL); !written) {
        m_services.log(
            fmt::format("[Morvelin] Could not save version “{}”: {}", version.name, written.error().description()));
        return false;
    }
    m_unwrittenVersionIDs.erase(version.id);
    return true;
}

void ProjectVersionStore::saveIndex() {
    m_capture.versionOrder = versionOrder();
    m_capture.currentVersionID = m_currentID;
    m_capture.name = m_projectName;
    const auto written = ProjectBundle::rewriteCapture(m_capture, m_bundleURL);
    if (!written) m_services.log("[Morvelin] Could not save project index: " + written.error().description());
}

/// Versions come and go at the end or from within, so what the order held before keeps its place, unreadable ones too.
std::vector<UUID> ProjectVersionStore::versionOrder() const {
    std::vector<UUID> order;
    for (const UUID& id : m_capture.versionOrder)
        if (version(id) || std::ranges::find(m_unreadableVersionIDs, id) != m_unreadableVersionIDs.end())
            order.push_back(id);
    for (const ProjectVersion& each : m_versions)
        if (std::ranges::find(order, each.id) == order.end()) order.push_back(each.id);
    return order;
}

void ProjectVersionStore::changed() const {
    if (m_listener) m_listener();
}

} // namespace morvelin
