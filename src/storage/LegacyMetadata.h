// The older single-file format of a project (`metadata.json`), which is read once and converted.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "storage/ProjectBundle.h"

namespace morvelin::ProjectBundle {

/// The whole of an older project; read only.
struct Metadata {
    std::int64_t version = 1;
    std::string name;
    Date createdAt;
    Seconds duration;
    Seconds originalDuration;
    std::vector<VideoFragment> fragments;
    std::vector<CursorEvent> cursorEvents;
    std::vector<ZoomKeyframe> zoomKeyframes;
    std::vector<PositionKeyframe> positionKeyframes;
    std::vector<MaskKeyframe> maskKeyframes;
    std::vector<FocusKeyframe> focusKeyframes;
    std::vector<TapTapKeyframe> tapTapKeyframes;
    std::map<std::string, bool> timelineTrackVisibility;
    Background background;
    double padding = 0;
    double cornerRadius = 0; ///< the present fraction, whatever the file's version held
    double shadowIntensity = 0;
    bool clickAnimationsEnabled = true;
    bool captionsEnabled = true;
    double captionSize = 1;
    std::optional<CameraSettings> camera;
    bool cameraEnabled = true;
};

/// Files up to version 7 held the corner's radius in points, at most 16, which are a fraction of 0.04 today.
[[nodiscard]] double cornerRadiusOfVersion(std::int64_t version, double radius);

template <class Fields>
void describe(Fields& fields, Metadata& metadata) {
    fields.withDefault("version", metadata.version, 1);
    fields.required("name", metadata.name);
    fields.required("createdAt", metadata.createdAt);
    fields.required("duration", metadata.duration);
    fields.withDefault("originalDuration", metadata.originalDuration, metadata.duration);
    fields.withDefault("fragments", metadata.fragments, std::vector<VideoFragment>{});
    fields.required("cursorEvents", metadata.cursorEvents);
    fields.required("zoomKeyframes", metadata.zoomKeyframes);
    fields.required("positionKeyframes", metadata.positionKeyframes);
    fields.withDefault("maskKeyframes", metadata.maskKeyframes, std::vector<MaskKeyframe>{});
    fields.withDefault("focusKeyframes", metadata.focusKeyframes, std::vector<FocusKeyframe>{});
    fields.withDefault("tapTapKeyframes", metadata.tapTapKeyframes, std::vector<TapTapKeyframe>{});
    fields.withDefault("timelineTrackVisibility", metadata.timelineTrackVisibility, std::map<std::string, bool>{});
    fields.required("background", metadata.background);
    fields.required("padding", metadata.padding);
    fields.required("cornerRadius", metadata.cornerRadius);
    fields.required("shadowIntensity", metadata.shadowIntensity);
    fields.withDefault("clickAnimationsEnabled", metadata.clickAnimationsEnabled, true);
    fields.withDefault("captionsEnabled", metadata.captionsEnabled, true);
    fields.withDefault("captionSize", metadata.captionSize, 1.0);
    fields.optional("camera", metadata.camera);
    fields.withDefault("cameraEnabled", metadata.cameraEnabled, true);
    metadata.cornerRadius = cornerRadiusOfVersion(metadata.version, metadata.cornerRadius);
}

/// What an older project becomes.
struct ConvertedEdits {
    EditPayload original;
    std::optional<EditPayload> imported; ///< absent where the older project held no work beyond its style
};

/// The generated timeline becomes the Original, and edits that a user had made are kept as a version of their own.
[[nodiscard]] ConvertedEdits convertedEdits(const Metadata& metadata, IdSource& ids);

/// Turns a bundle with `metadata.json` into one with header and versions; the older file is kept under another name.
/// On failure nothing has changed, unless only that last renaming failed.
Result<void, BundleError> convertLegacyBundle(const std::filesystem::path& bundleURL, const Services& services);

} // namespace morvelin::ProjectBundle
