// A project as one folder on disk: its header, its versions, and the operations that read, write and rename it.
//
// What the capture recorded never changes after the take; what a user edits lies in one file for each version. The
// folder has no owner at run time: whoever has the project open calls these operations from one thread.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/CursorEvent.h"
#include "core/ProjectVersion.h"
#include "core/base/Date.h"
#include "core/base/Log.h"
#include "core/base/Result.h"
#include "storage/BundleError.h"

namespace morvelin::ProjectBundle {

/// The format number that new bundles carry.
inline constexpr std::int64_t kFormatVersion = 9;

/// The header and version index of a project (`capture.json`).
struct Capture {
    std::int64_t version = kFormatVersion;
    std::string name; ///< the display name, not necessarily the folder's
    Date createdAt;   ///< when the recording was made
    Seconds originalDuration;
    std::vector<UUID> versionOrder;
    std::optional<UUID> currentVersionID;
    std::optional<RecordingKind> recordingKind;

    bool operator==(const Capture&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, Capture>& capture) {
    fields.required("version", capture.version);
    fields.required("name", capture.name);
    fields.required("createdAt", capture.createdAt);
    fields.required("originalDuration", capture.originalDuration);
    fields.required("versionOrder", capture.versionOrder);
    fields.optional("currentVersionID", capture.currentVersionID);
    fields.optional("recordingKind", capture.recordingKind);
}

/// What opening a bundle gives.
struct Contents {
    Capture capture;
    std::vector<ProjectVersion> versions; ///< in the order of `capture.versionOrder`
    UUID currentVersionID;                ///< names one of `versions`, never the locked original
    std::vector<CursorEvent> cursorEvents;
    std::filesystem::path recordingURL;
    std::optional<std::filesystem::path> cameraURL;
    bool didConvertLegacyBundle = false;
    std::vector<UUID> unreadableVersionIDs; ///< still named by `capture.versionOrder`

    /// The version to edit.
    [[nodiscard]] const ProjectVersion& currentVersion() const;
};

/// What the operations need of the world.
struct Services {
    IdSource& ids;
    const WallClock& clock;
    Log log;
};

/// Opens a project. It is made whole where something is missing: lost versions are generated anew from the pointer's
/// track, a project of the older single-file format is converted. When that fails the folder is as it was.
Result<Contents, BundleError> load(const std::filesystem::path& bundleURL, const Services& services);

Result<void, BundleError> writeCapture(const Capture& capture, const std::filesystem::path& bundleURL);
/// Only where there is a header: a project that was deleted behind the program's back must not reappear.
Result<void, BundleError> rewriteCapture(const Capture& capture, const std::filesystem::path& bundleURL);
/// Makes `versions/` where it is missing.
Result<void, BundleError> writeVersion(const ProjectVersion& version, const std::filesystem::path& bundleURL);
Result<void, BundleError> writeCursorEvents(std::span<const CursorEvent> events,
                                            const std::filesystem::path& bundleURL);
Result<void, BundleError> deleteVersionFile(const UUID& id, const std::filesystem::path& bundleURL);

/// Gives the project a new display name, and its folder the file name that goes with it; where that is taken, with a
/// numeral. Returns where the bundle now is. A name of white space changes nothing.
Result<std::filesystem::path, BundleError> renameBundle(const std::filesystem::path& bundleURL,
                                                        const std::string& newName);

/// The file name of a project without its extension: the display name made safe for a folder.
[[nodiscard]] std::string folderName(const std::string& name);

/// `folder/<stem>.morvelin`, or the first of `<stem> 2.morvelin`, `<stem> 3.morvelin` and so on that is free.
/// `present` counts as free: it is where the bundle is already.
[[nodiscard]] std::filesystem::path freeBundleURL(const std::filesystem::path& folder, const std::string& stem,
                                                  const std::filesystem::path& present);

/// Absolute, and without the slash that a shell leaves behind a folder's name.
[[nodiscard]] std::filesystem::path normalized(const std::filesystem::path& folder);

/// The first edit of a take: the whole recording, with the keys that its clicks and gestures generate.
[[nodiscard]] EditPayload initialEdit(std::span<const CursorEvent> cursorEvents, Seconds duration, IdSource& ids);

/// A version that hasn't been written yet, stamped with the present time.
[[nodiscard]] ProjectVersion newVersion(std::string name, EditPayload edit, const Services& services);
/// The locked original of a project.
[[nodiscard]] ProjectVersion newOriginal(EditPayload edit, const Services& services);

/// Files hold whole seconds: with this a record in memory equals what is read back.
[[nodiscard]] Date wholeSeconds(Date date);

/// Gives an id to each position key that came without one from an old file.
void giveMissingIDs(EditPayload& edit, IdSource& ids);

} // namespace morvelin::ProjectBundle
