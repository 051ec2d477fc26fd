#include "storage/LegacyMetadata.h"

#include <cmath>

#include "storage/BundleFiles.h"
#include "storage/FolderChanges.h"

namespace morvelin::ProjectBundle {

namespace fs = std::filesystem;

namespace {

constexpr Seconds kSameLength{0.000001};

/// Length of the recording itself.
Seconds recordedDuration(const Metadata& metadata) {
    return metadata.originalDuration > 0_s ? metadata.originalDuration : metadata.duration;
}

void copyStyle(const EditPayload& from, EditPayload& to) {
    to.background = from.background;
    to.padding = from.padding;
    to.cornerRadius = from.cornerRadius;
    to.shadowIntensity = from.shadowIntensity;
    to.clickAnimationsEnabled = from.clickAnimationsEnabled;
    to.captionsEnabled = from.captionsEnabled;
    to.captionSize = from.captionSize;
    to.camera = from.camera;
    to.cameraEnabled = from.cameraEnabled;
    to.timelineTrackVisibility = from.timelineTrackVisibility;
}

EditPayload editOf(const Metadata& metadata, IdSource& ids) {
    EditPayload edit;
    edit.duration = metadata.duration;
    edit.fragments = metadata.fragments;
    edit.zoomKeyframes = metadata.zoomKeyframes;
    edit.positionKeyframes = metadata.positionKeyframes;
    edit.maskKeyframes = metadata.maskKeyframes;
    edit.focusKeyframes = metadata.focusKeyframes;
    edit.tapTapKeyframes = metadata.tapTapKeyframes;
    edit.timelineTrackVisibility = metadata.timelineTrackVisibility;
    edit.editing = EditingSettings{};
    edit.background = metadata.background;
    edit.padding = metadata.padding;
    edit.cornerRadius = metadata.cornerRadius;
    edit.shadowIntensity = metadata.shadowIntensity;
    edit.clickAnimationsEnabled = metadata.clickAnimationsEnabled;
    edit.captionsEnabled = metadata.captionsEnabled;
    edit.captionSize = metadata.captionSize;
    edit.camera = metadata.camera;
    edit.cameraEnabled = metadata.cameraEnabled;
    const Seconds duration = recordedDuration(metadata);
    if (edit.fragments.empty() && duration > 0_s) {
        edit.fragments = {VideoFragment::whole(duration, ids)};
        edit.duration = duration;
    }
    giveMissingIDs(edit, ids);
    return edit;
}

/// Nobody has touched the timeline: no zooms, and the one fragment is the whole recording.
bool isPristine(const EditPayload& edit, Seconds duration) {
    if (!edit.zoomKeyframes.empty() || !edit.positionKeyframes.empty() || edit.fragments.size() > 1) return false;
    return std::ranges::all_of(edit.fragments, [&](const VideoFragment& fragment) {
        const Seconds off = fragment.sourceEnd - SourceTime(duration);
        return fragment.speed == 1 && fragment.sourceStart <= SourceTime(kSameLength) &&
               std::abs(off.value) <= kSameLength.value;
    });
}

ProjectVersion secondVersion(const ConvertedEdits& edits, const Services& services) {
    const bool isImported = edits.imported && *edits.imported != edits.original;
    return newVersion(isImported ? "Imported" : "Version 1", edits.imported.value_or(edits.original), services);
}

Capture headerOf(const Metadata& metadata, const ProjectVersion& original, const ProjectVersion& second) {
    Capture capture;
    capture.name = metadata.name;
    capture.createdAt = metadata.createdAt;
    capture.originalDuration = recordedDuration(metadata);
    capture.versionOrder = {original.id, second.id};
    capture.currentVersionID = second.id;
    return capture;
}

/// The header comes last: a bundle that has it is converted.
Result<void, BundleError> writeConverted(const Metadata& metadata, const fs::path& bundleURL,
                                         const Services& services) {
    const ConvertedEdits edits = convertedEdits(metadata, services.ids);
    const ProjectVersion original = newOriginal(edits.original, services);
    const ProjectVersion second = secondVersion(edits, services);

    FolderChanges changes;
    for (const fs::path& path : {bundleURL / kVersionsFolder, bundleURL / kCursorEventsFile,
                                 versionFile(bundleURL, original.id), versionFile(bundleURL, second.id)})
        changes.remember(path);
    if (auto written = writeCursorEvents(metadata.cursorEvents, bundleURL); !written) return written;
    if (auto written = writeVersion(original, bundleURL); !written) return written;
    if (auto written = writeVersion(second, bundleURL); !written) return written;
    if (auto written = writeCapture(headerOf(metadata, original, second), bundleURL); !written) return written;
    changes.keep();
    return {};
}

} // namespace

double cornerRadiusOfVersion(std::int64_t version, double radius) {
    constexpr std::int64_t kLastVersionInPoints = 7;
    constexpr double kMostPoints = 16;
    constexpr double kMostFraction = 0.04;
    if (version > kLastVersionInPoints) return radius;
    return std::clamp(radius, 0.0, kMostPoints) / kMostPoints * kMostFraction;
}

ConvertedEdits convertedEdits(const Metadata& metadata, IdSource& ids) {
    EditPayload legacy = editOf(metadata, ids);
    if (metadata.cursorEvents.empty()) return {std::move(legacy), std::nullopt};

    const Seconds duration = recordedDuration(metadata);
    EditPayload original = initialEdit(metadata.cursorEvents, duration, ids);
    copyStyle(legacy, original);
    if (!isPristine(legacy, duration)) return {std::move(original), std::move(legacy)};
    original.maskKeyframes = legacy.maskKeyframes;
    return {std::move(original), std::nullopt};
}

Result<void, BundleError> convertLegacyBundle(const fs::path& bundleURL, const Services& services) {
    const fs::path file = bundleURL / kLegacyMetadataFile;
    const auto metadata = readRecord<Metadata>(file);
    if (!metadata) return failure(metadata.error());
    if (auto written = writeConverted(*metadata, bundleURL, services); !written) return written;

    const fs::path backup = bundleURL / kConvertedMetadataFile;
    (void)removeFile(backup);
    if (auto moved = moveItem(file, backup); !moved) return passOn(std::move(moved));
    return {};
}

} // namespace morvelin::ProjectBundle
