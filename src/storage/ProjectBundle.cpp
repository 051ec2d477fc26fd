#include "storage/ProjectBundle.h"

#include <fmt/format.h>

#include "core/base/Text.h"
#include "storage/BundleFiles.h"
#include "storage/CursorTrackFile.h"
#include "timeline/TimelineKeyframes.h"

namespace morvelin::ProjectBundle {

namespace fs = std::filesystem;

namespace {

/// Leaves room for a numeral and the extension in the 255 bytes that file systems allow.
constexpr std::size_t kFolderNameBytes = 200;

/// The length of the character at `at` that separates parts of a path or controls a terminal; 0 for any other.
std::size_t unsafeCharacterAt(std::string_view text, std::size_t at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x20 || byte == 0x7f || byte == '/' || byte == ':' || byte == '\\') return 1;
    // The second block of control characters, U+0080 to U+009F.
    const bool isC1 = byte == 0xc2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xa0;
    return isC1 ? 2 : 0;
}

std::string withHyphens(std::string_view name) {
    std::string safe;
    for (std::size_t at = 0; at < name.size();) {
        const std::size_t length = unsafeCharacterAt(name, at);
        safe += length > 0 ? '-' : name[at];
        at += std::max<std::size_t>(length, 1);
    }
    return safe;
}

/// A leading dot would hide the folder, and "." and ".." are no names at all.
std::string withoutLeadingDots(std::string name) {
    while (name.starts_with('.')) name = trimmed(std::string_view(name).substr(1));
    return name;
}

/// Whether a name is in use, be it by a link that leads nowhere. A path that can't be asked about counts as free: the
/// move to it then tells why.
bool isTaken(const fs::path& path) {
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

} // namespace

const ProjectVersion& Contents::currentVersion() const {
    return *std::ranges::find(versions, currentVersionID, &ProjectVersion::id);
}

Result<void, BundleError> writeCapture(const Capture& capture, const fs::path& bundleURL) {
    return writeRecord(capture, bundleURL / kCaptureFile);
}

Result<void, BundleError> rewriteCapture(const Capture& capture, const fs::path& bundleURL) {
    if (!isPresent(bundleURL / kCaptureFile)) return failure(BundleError(BundleError::MissingMetadata{}));
    return writeCapture(capture, bundleURL);
}

Result<void, BundleError> writeVersion(const ProjectVersion& version, const fs::path& bundleURL) {
    if (auto made = createFolder(bundleURL / kVersionsFolder); !made) return passOn(std::move(made));
    return writeRecord(version, versionFile(bundleURL, version.id));
}

Result<void, BundleError> writeCursorEvents(std::span<const CursorEvent> events, const fs::path& bundleURL) {
    auto written = writeFileAtomically(bundleURL / kCursorEventsFile, encodeCursorEvents(events));
    if (!written) return passOn(std::move(written));
    return {};
}

Result<void, BundleError> deleteVersionFile(const UUID& id, const fs::path& bundleURL) {
    if (auto removed = removeFile(versionFile(bundleURL, id)); !removed) return passOn(std::move(removed));
    return {};
}

Result<fs::path, BundleError> renameBundle(const fs::path& bundleURL, const std::string& newName) {
    const std::string name = trimmed(newName);
    if (name.empty()) return bundleURL;

    const fs::path captureFile = bundleURL / kCaptureFile;
    const auto before = readFile(captureFile);
    if (!before) return failure(BundleError(before.error()));
    auto capture = readRecord<Capture>(captureFile);
    if (!capture) return passOn(std::move(capture));
    capture->name = name;
    if (auto written = writeCapture(*capture, bundleURL); !written) return passOn(std::move(written));

    const fs::path present = normalized(bundleURL);
    fs::path target = freeBundleURL(present.parent_path(), folderName(name), present);
    if (target == present) return bundleURL;
    if (auto moved = moveItem(present, target); !moved) {
        (void)writeFileAtomically(captureFile, *before);
        return passOn(std::move(moved));
    }
    return target;
}

std::string folderName(const std::string& name) {
    const std::string safe = withoutLeadingDots(trimmed(withHyphens(trimmed(name))));
    const std::string fitting = trimmed(cutAtCharacter(safe, kFolderNameBytes));
    return fitting.empty() ? "Recording" : fitting;
}

fs::path freeBundleURL(const fs::path& folder, const std::string& stem, const fs::path& present) {
    fs::path url = folder / (stem + kExtension);
    for (int number = 2; url != present && isTaken(url); ++number)
        url = folder / fmt::format("{} {}{}", stem, number, kExtension);
    return url;
}

fs::path normalized(const fs::path& folder) {
    std::error_code error;
    const fs::path absolute = fs::absolute(folder, error).lexically_normal();
    return absolute.has_filename() ? absolute : absolute.parent_path();
}

EditPayload initialEdit(std::span<const CursorEvent> cursorEvents, Seconds duration, IdSource& ids) {
    constexpr auto kFresh = TimelineKeyframeSource::GenerateFromCursorEvents;
    const EditingSettings settings;
    auto keyframes = withBaselineKeys(timelineKeyframes(kFresh, {}, cursorEvents, duration, settings, ids), ids);

    EditPayload edit;
    edit.editing = settings;
    edit.duration = duration;
    if (duration > 0_s) edit.fragments = {VideoFragment::whole(duration, ids)};
    edit.zoomKeyframes = std::move(keyframes.zoom);
    edit.positionKeyframes = std::move(keyframes.position);
    edit.focusKeyframes = std::move(keyframes.focuses);
    edit.tapTapKeyframes = std::move(keyframes.tapTaps);
    edit.audioTracks = {AudioTrackRef::recording()};
    return edit;
}

ProjectVersion newVersion(std::string name, EditPayload edit, const Services& services) {
    const Date now = wholeSeconds(services.clock.now());
    return ProjectVersion{services.ids.next(), std::move(name), false, now, now, std::move(edit)};
}

ProjectVersion newOriginal(EditPayload edit, const Services& services) {
    ProjectVersion original = newVersion("Original", std::move(edit), services);
    original.isInitial = true;
    return original;
}

Date wholeSeconds(Date date) { return Date::fromUnixSeconds(date.unixSeconds()); }

void giveMissingIDs(EditPayload& edit, IdSource& ids) {
    for (PositionKeyframe& key : edit.positionKeyframes)
        if (key.id == UUID{}) key.id = ids.next();
    if (!edit.captions) return;
    for (CaptionCue& cue : edit.captions->cues)
        if (cue.id == UUID{}) cue.id = ids.next();
}

} // namespace morvelin::ProjectBundle
