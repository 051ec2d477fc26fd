// The open project: who it is, where it lies, and its edit with nothing left to be guessed. Lives in memory alone; what is
// stored is the version's payload.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/ProjectVersion.h"
#include "core/base/Date.h"
#include "core/base/Identity.h"

namespace morvelin {

/// Owned by whoever has the project open, on the main thread; one that is handed out as const may be read from any.
struct Project {
    UUID id; ///< of this opening
    std::string name;
    Date createdAt;
    std::filesystem::path recordingURL;
    std::filesystem::path bundleURL;
    Seconds duration;         ///< of the edit timeline
    Seconds originalDuration; ///< of the recording
    std::vector<VideoFragment> fragments;
    std::vector<ZoomKeyframe> zoomKeyframes;
    std::vector<PositionKeyframe> positionKeyframes;
    std::vector<MaskKeyframe> maskKeyframes;
    std::vector<FocusKeyframe> focusKeyframes;
    std::vector<TapTapKeyframe> tapTapKeyframes;
    std::map<std::string, bool> timelineTrackVisibility; ///< keyed by `TimelineTrack`'s raw values
    EditingSettings editing;
    Background background;
    double padding = 0.05;
    double cornerRadius = 0.01;
    double shadowIntensity = 0.5;
    bool clickAnimationsEnabled = true;
    std::optional<CodableColor> clickAnimationColor; ///< absent: the built-in one, as the next
    std::optional<CodableColor> annotationColor;
    TapTapStyle tapTapStyle = TapTapStyle::Pointer;
    double tapTapScale = 1;
    CursorSettings cursor;
    bool captionsEnabled = true;
    double captionSize = 1;
    std::optional<CaptionTrack> captions;
    std::optional<std::vector<AudioTrackRef>> audioTracks;
    std::optional<CameraSettings> camera;
    std::optional<std::filesystem::path> cameraURL; ///< absent without a webcam's track
    bool cameraEnabled = true;
    std::optional<std::filesystem::path> exportURL; ///< of the last export

    /// Takes over a version's edit; what its payload leaves out reads as the default.
    void apply(const EditPayload& edit);
};

} // namespace morvelin
