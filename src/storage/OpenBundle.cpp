#include "storage/ProjectBundle.h"

#include <set>

#include <fmt/format.h>

#include "storage/BundleFiles.h"
#include "storage/CursorTrackFile.h"
#include "storage/FolderChanges.h"
#include "storage/LegacyMetadata.h"

namespace morvelin::ProjectBundle {

namespace fs = std::filesystem;

namespace {

Result<std::vector<CursorEvent>, BundleError> readCursorTrack(const fs::path& file) {
    auto text = readFile(file);
    if (!text) return passOn(std::move(text));
    auto events = decodeCursorEvents(std::move(*text));
    if (!events) return failure(BundleError(BundleError::Undecodable{file, std::move(events).error()}));
    return std::move(*events);
}

/// One opening of a project, step by step; what it writes counts only when the last step has worked.
class Opening {
public:
    Opening(const fs::path& bundleURL, const Services& services) : m_bundleURL(bundleURL), m_services(services) {}

    Result<Contents, BundleError> run() {
        if (!isPresent(m_bundleURL / kRecordingFile)) return failure(BundleError(BundleError::MissingRecording{}));
        if (auto made = makeHeader(); !made) return passOn(std::move(made));
        if (auto read = readHeader(); !read) return passOn(std::move(read));
        readCursorEvents();
        readListedVersions();
        readOtherVersions();
        if (cannotBeEdited()) return failure(BundleError(BundleError::UnreadableVersions{}));
        if (auto completed = completeVersions(); !completed) return passOn(std::move(completed));
        if (auto written = writeIndex(); !written) return passOn(std::move(written));
        findMovies();
        m_changes.keep();
        return std::move(m_contents);
    }

private:
    /// A folder of the older format has one file in place of header and versions.
    Result<void, BundleError> makeHeader() {
        if (isPresent(m_bundleURL / kCaptureFile)) return {};
        if (!isPresent(m_bundleURL / kLegacyMetadataFile)) return failure(BundleError(BundleError::MissingMetadata{}));
        m_contents.didConvertLegacyBundle = true;
        return convertLegacyBundle(m_bundleURL, m_services);
    }

    Result<void, BundleError> readHeader() {
        auto capture = readRecord<Capture>(m_bundleURL / kCaptureFile);
        if (!capture) return passOn(std::move(capture));
        m_contents.capture = std::move(*capture);
        return {};
    }

    /// A project without its pointer's track is still worth opening.
    void readCursorEvents() {
        if (!isPresent(m_bundleURL / kCursorEventsFile)) return;
        auto events = readCursorTrack(m_bundleURL / kCursorEventsFile);
        if (events)
            m_contents.cursorEvents = std::move(*events);
        else
            m_services.log("[ProjectBundle] The cursor track can't be read: " + events.error().description());
    }

    /// A file's name wins over the id inside it: what is written later must go to the file that was read.
    Result<ProjectVersion, BundleError> readVersion(const fs::path& file) const {
        auto version = readRecord<ProjectVersion>(file);
        if (!version) return version;
        if (const auto id = UUID::parse(file.stem().string())) version->id = *id;
        giveMissingIDs(version->edit, m_services.ids);
        return version;
    }

    /// Ids whose file is missing leave the order; those whose file can't be read stay, for a newer program to find.
    void readListedVersions() {
        for (const UUID& id : m_contents.capture.versionOrder) {
            const fs::path file = versionFile(m_bundleURL, id);
            if (!isPresent(file) || !m_seen.insert(id).second) continue;
            m_order.push_back(id);
            if (auto version = readVersion(file)) {
                m_contents.versions.push_back(std::move(*version));
            } else {
                m_services.log(fmt::format("[ProjectBundle] Version {} can't be read: {}", id.text(),
                                           version.error().description()));
                m_contents.unreadableVersionIDs.push_back(id);
            }
        }
    }

    /// Versions that a crash kept out of the order.
    void readOtherVersions() {
        std::vector<ProjectVersion> found;
        std::error_code error;
        for (fs::directory_iterator file(m_bundleURL / kVersionsFolder, error), end; !error && file != end;
             file.increment(error)) {
            if (file->path().extension() != ".json") continue;
            const auto named = UUID::parse(file->path().stem().string());
            if (named && m_seen.contains(*named)) continue;
            auto version = readVersion(file->path());
            if (version && m_seen.insert(version->id).second) found.push_back(std::move(*version));
        }
        std::ranges::sort(found, {},
                          [](const ProjectVersion& version) { return std::pair(version.createdAt, version.id); });
        for (ProjectVersion& version : found) {
            m_order.push_back(version.id);
            m_contents.versions.push_back(std::move(version));
        }
    }

    /// Generating new versions beside ones that can't be read would hide the user's work.
    bool cannotBeEdited() const {
        return !m_contents.unreadableVersionIDs.empty() &&
               std::ranges::all_of(m_contents.versions, &ProjectVersion::isInitial);
    }

    /// Every project has its locked original, in first place, and at least one version that can be edited.
    Result<void, BundleError> completeVersions() {
        const std::vector<ProjectVersion>& versions = m_contents.versions;
        if (std::ranges::none_of(versions, &ProjectVersion::isInitial)) {
            const Seconds duration = m_contents.capture.originalDuration;
            EditPayload edit = initialEdit(m_contents.cursorEvents, duration, m_services.ids);
            auto added = add(newOriginal(std::move(edit), m_services), 0);
            if (!added) return added;
        }
        if (std::ranges::all_of(versions, &ProjectVersion::isInitial))
            return add(newVersion("Version 1", versions.front().edit, m_services), versions.size());
        return {};
    }

    /// Only for a first or a last place: between them the order has unreadable versions that the list has not.
    Result<void, BundleError> add(ProjectVersion version, std::size_t place) {
        m_changes.remember(m_bundleURL / kVersionsFolder);
        m_changes.remember(versionFile(m_bundleURL, version.id));
        if (auto written = writeVersion(version, m_bundleURL); !written) return written;
        m_order.insert(place == 0 ? m_order.begin() : m_order.end(), version.id);
        m_contents.versions.insert(m_contents.versions.begin() + static_cast<std::ptrdiff_t>(place),
                                   std::move(version));
        return {};
    }

    /// The version that was open last; the locked original is never the one to edit.
    UUID chooseCurrentVersion() const {
        const auto& versions = m_contents.versions;
        const auto isLastOne = [&](const ProjectVersion& version) {
            return !version.isInitial && version.id == m_contents.capture.currentVersionID;
        };
        auto chosen = std::ranges::find_if(versions, isLastOne);
        if (chosen == versions.end()) chosen = std::ranges::find(versions, false, &ProjectVersion::isInitial);
        return chosen->id;
    }

    Result<void, BundleError> writeIndex() {
        m_contents.currentVersionID = chooseCurrentVersion();
        Capture& capture = m_contents.capture;
        const Capture before = capture;
        capture.versionOrder = m_order;
        capture.currentVersionID = m_contents.currentVersionID;
        return capture == before ? Result<void, BundleError>{} : writeCapture(capture, m_bundleURL);
    }

    void findMovies() {
        m_contents.recordingURL = m_bundleURL / kRecordingFile;
        if (isPresent(m_bundleURL / kCameraFile)) m_contents.cameraURL = m_bundleURL / kCameraFile;
    }

    const fs::path& m_bundleURL;
    const Services& m_services;
    Contents m_contents;
    FolderChanges m_changes;
    std::set<UUID> m_seen;     ///< versions that were read, or can't be
    std::vector<UUID> m_order; ///< the index as it will be
};

} // namespace

Result<Contents, BundleError> load(const fs::path& bundleURL, const Services& services) {
    return Opening(bundleURL, services).run();
}

} // namespace morvelin::ProjectBundle
