// One edit of a take: everything the user changes lives in a version's payload.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/AudioTracks.h"
#include "core/Captions.h"
#include "core/Keyframes.h"
#include "core/Style.h"
#include "core/VideoFragment.h"

namespace morvelin {

/// How a recording was made.
enum class RecordingKind { Screen, TalkMode, Agent };

constexpr auto rawValues(std::type_identity<RecordingKind>) {
    using enum RecordingKind;
    return std::to_array<std::pair<RecordingKind, std::string_view>>(
        {{Screen, "screen"}, {TalkMode, "talkMode"}, {Agent, "agent"}});
}

/// The editor's rows, in display order.
enum class TimelineTrack { Clip, Zoom, Position, Captions, Effects, Camera, Audio };

constexpr auto rawValues(std::type_identity<TimelineTrack>) {
    using enum TimelineTrack;
    return std::to_array<std::pair<TimelineTrack, std::string_view>>({{Clip, "clip"},
                                                                      {Zoom, "zoom"},
                                                                      {Position, "position"},
                                                                      {Captions, "captions"},
                                                                      {Effects, "effects"},
                                                                      {Camera, "camera"},
                                                                      {Audio, "audio"}});
}

/// Everything a version holds.
struct EditPayload {
    Seconds duration; ///< length of the edit timeline
    std::vector<VideoFragment> fragments;
    std::vector<ZoomKeyframe> zoomKeyframes;
    std::vector<PositionKeyframe> positionKeyframes;
    std::vector<MaskKeyframe> maskKeyframes;
    std::vector<FocusKeyframe> focusKeyframes;
    std::vector<TapTapKeyframe> tapTapKeyframes;
    std::map<std::string, bool> timelineTrackVisibility; ///< keyed by `TimelineTrack`'s raw values
    std::optional<EditingSettings> editing;
    Background background;
    double padding = 0.05;      ///< space around the video, fraction of the smaller output side
    double cornerRadius = 0.01; ///< fraction of the frame's smaller side
    double shadowIntensity = 0.5;
    bool clickAnimationsEnabled = true;
    std::optional<CodableColor> clickAnimationColor;
    std::optional<CodableColor> annotationColor;
    std::optional<TapTapStyle> tapTapStyle;
    std::optional<double> tapTapScale;
    std::optional<CursorSettings> cursor;
    bool captionsEnabled = true;
    double captionSize = 1;
    std::optional<CaptionTrack> captions;
    std::optional<CameraSettings> camera;
    bool cameraEnabled = true;
    std::optional<std::vector<AudioTrackRef>> audioTracks;
    std::optional<UUID> narrationTakeID;
    std::optional<std::vector<UUID>> narrationTakeIDs;
    std::optional<std::vector<NarrationArrangement>> narrationArrangements;
    std::optional<UUID> captionsSourceID;

    bool operator==(const EditPayload&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, EditPayload>& edit) {
    fields.required("duration", edit.duration);
    fields.required("fragments", edit.fragments);
    fields.required("zoomKeyframes", edit.zoomKeyframes);
    fields.required("positionKeyframes", edit.positionKeyframes);
    fields.required("maskKeyframes", edit.maskKeyframes);
    fields.required("focusKeyframes", edit.focusKeyframes);
    fields.required("tapTapKeyframes", edit.tapTapKeyframes);
    fields.required("timelineTrackVisibility", edit.timelineTrackVisibility);
    fields.optional("editing", edit.editing);
    fields.required("background", edit.background);
    fields.required("padding", edit.padding);
    fields.required("cornerRadius", edit.cornerRadius);
    fields.required("shadowIntensity", edit.shadowIntensity);
    fields.required("clickAnimationsEnabled", edit.clickAnimationsEnabled);
    fields.optional("clickAnimationColor", edit.clickAnimationColor);
    fields.optional("annotationColor", edit.annotationColor);
    fields.optional("tapTapStyle", edit.tapTapStyle);
    fields.optional("tapTapScale", edit.tapTapScale);
    fields.optional("cursor", edit.cursor);
    fields.required("captionsEnabled", edit.captionsEnabled);
    fields.required("captionSize", edit.captionSize);
    fields.optional("captions", edit.captions);
    fields.optional("camera", edit.camera);
    fields.required("cameraEnabled", edit.cameraEnabled);
    fields.optional("audioTracks", edit.audioTracks);
    fields.optional("narrationTakeID", edit.narrationTakeID);
    fields.optional("narrationTakeIDs", edit.narrationTakeIDs);
    fields.optional("narrationArrangements", edit.narrationArrangements);
    fields.optional("captionsSourceID", edit.captionsSourceID);
}

/// One version of a project (`versions/<UUID>.json`).
struct ProjectVersion {
    UUID id;
    std::string name;
    bool isInitial = false; ///< the locked original, of which a project has one
    Date createdAt;
    Date updatedAt;
    EditPayload edit;

    bool operator==(const ProjectVersion&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, ProjectVersion>& version) {
    fields.required("id", version.id);
    fields.required("name", version.name);
    fields.required("isInitial", version.isInitial);
    fields.required("createdAt", version.createdAt);
    fields.required("updatedAt", version.updatedAt);
    fields.required("edit", version.edit);
}

} // namespace morvelin
