#include "storage/CreateBundle.h"

#include <cerrno>

#include "storage/BundleFiles.h"

namespace morvelin::ProjectBundle {

namespace fs = std::filesystem;

namespace {

/// A new folder that goes away with all that was written into it, unless it is kept.
class NewFolder {
public:
    explicit NewFolder(fs::path path) : m_path(std::move(path)) {}
    NewFolder(const NewFolder&) = delete;
    NewFolder& operator=(const NewFolder&) = delete;
    ~NewFolder() {
        std::error_code ignored;
        if (!m_isKept) fs::remove_all(m_path, ignored);
    }
    void keep() { m_isKept = true; }

private:
    fs::path m_path;
    bool m_isKept = false;
};

/// Makes a folder that wasn't there before: what is in it is ours to remove.
std::optional<FileError> makeOwnFolder(const fs::path& path) {
    std::error_code error;
    if (fs::create_directory(path, error)) return std::nullopt;
    return FileError{FileError::Operation::CreateFolder, path, error ? error.value() : EEXIST};
}

void cutPointerTrack(FinishedTake& take) {
    const auto isPastEnd = [&](SourceTime time) { return time.sinceZero() > take.duration; };
    std::erase_if(take.cursorEvents, [&](const CursorEvent& event) { return isPastEnd(event.timestamp); });
    if (take.cursorShapes)
        std::erase_if(take.cursorShapes->track.changes, [&](const auto& change) { return isPastEnd(change.t); });
}

void storeCursorShapes(const FinishedTake& take, const fs::path& bundleURL, const Log& log) {
    if (!take.cursorShapes) return;
    const auto written = writeCursorShapes(*take.cursorShapes, bundleURL, log);
    if (!written) log("[ProjectBundle] Could not store cursor shapes: " + written.error().description());
}

void storeCamera(const FinishedTake& take, const fs::path& bundleURL, const Log& log) {
    if (!take.camera) return;
    const auto moved = moveItem(*take.camera, bundleURL / kCameraFile);
    if (!moved) log("[ProjectBundle] Could not store camera track: " + moved.error().description());
}

Result<void, BundleError> writeFirstVersions(const FinishedTake& take, const fs::path& bundleURL,
                                             const Services& services) {
    EditPayload edit = initialEdit(take.cursorEvents, take.duration, services.ids);
    edit.camera = take.cameraSettings;
    const ProjectVersion original = newOriginal(edit, services);
    const ProjectVersion first = newVersion("Version 1", edit, services);
    if (auto written = writeVersion(original, bundleURL); !written) return written;
    if (auto written = writeVersion(first, bundleURL); !written) return written;

    Capture capture;
    capture.name = take.name;
    capture.createdAt = take.createdAt;
    capture.originalDuration = take.duration;
    capture.versionOrder = {original.id, first.id};
    capture.currentVersionID = first.id;
    capture.recordingKind = take.kind;
    return writeCapture(capture, bundleURL);
}

} // namespace

std::string recordingName(Date startedAt) { return "Recording " + startedAt.localDateAndTime(); }

Result<fs::path, BundleError> createBundle(FinishedTake take, const Services& services) {
    cutPointerTrack(take);
    const fs::path& wanted = take.bundleURL.empty() ? take.movie : take.bundleURL;
    fs::path bundleURL = freeBundleURL(wanted.parent_path(), wanted.stem().string(), {});
    if (auto error = makeOwnFolder(bundleURL)) return failure(BundleError(std::move(*error)));
    NewFolder folder(bundleURL);
    if (auto made = createFolder(bundleURL / kVersionsFolder); !made) return passOn(std::move(made));
    if (auto written = writeCursorEvents(take.cursorEvents, bundleURL); !written) return passOn(std::move(written));
    storeCursorShapes(take, bundleURL, services.log);
    if (auto written = writeFirstVersions(take, bundleURL, services); !written) return passOn(std::move(written));
    if (auto moved = moveItem(take.movie, bundleURL / kRecordingFile); !moved) return passOn(std::move(moved));
    folder.keep();
    storeCamera(take, bundleURL, services.log);
    return bundleURL;
}

} // namespace morvelin::ProjectBundle
