#include "core/Project.h"

namespace morvelin {

void Project::apply(const EditPayload& edit) {
    duration = edit.duration;
    fragments = edit.fragments;
    zoomKeyframes = edit.zoomKeyframes;
    positionKeyframes = edit.positionKeyframes;
    maskKeyframes = edit.maskKeyframes;
    focusKeyframes = edit.focusKeyframes;
    tapTapKeyframes = edit.tapTapKeyframes;
    timelineTrackVisibility = edit.timelineTrackVisibility;
    editing = edit.editing.value_or(EditingSettings());
    background = edit.background;
    padding = edit.padding;
    cornerRadius = edit.cornerRadius;
    shadowIntensity = edit.shadowIntensity;
    clickAnimationsEnabled = edit.clickAnimationsEnabled;
    clickAnimationColor = edit.clickAnimationColor;
    annotationColor = edit.annotationColor;
    tapTapStyle = edit.tapTapStyle.value_or(TapTapStyle::Pointer);
    tapTapScale = edit.tapTapScale.value_or(1);
    cursor = edit.cursor.value_or(CursorSettings());
    captionsEnabled = edit.captionsEnabled;
    captionSize = edit.captionSize;
    captions = edit.captions;
    audioTracks = edit.audioTracks;
    camera = edit.camera;
    cameraEnabled = edit.cameraEnabled;
}

} // namespace morvelin
