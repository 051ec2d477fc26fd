// The fragments of an edit with all that is keyed to its timeline: what a cut or another speed changes together.
#pragma once

#include "core/ProjectVersion.h"
#include "timeline/FragmentMap.h"
#include "timeline/ZoomEngine.h"

namespace morvelin {

struct TimelineTracks {
    std::vector<VideoFragment> fragments;
    ZoomTracks camera;
    std::vector<MaskKeyframe> masks;
    std::vector<FocusKeyframe> focuses;
    std::vector<TapTapKeyframe> tapTaps;

    bool operator==(const TimelineTracks&) const = default;

    [[nodiscard]] static TimelineTracks of(const EditPayload& edit) {
        return {edit.fragments,
                {edit.zoomKeyframes, edit.positionKeyframes},
                edit.maskKeyframes,
                edit.focusKeyframes,
                edit.tapTapKeyframes};
    }

    /// Writes the tracks and the duration that follows from the fragments.
    void storeIn(EditPayload& edit) const {
        edit.duration = duration();
        edit.fragments = fragments;
        edit.zoomKeyframes = camera.zoom;
        edit.positionKeyframes = camera.position;
        edit.maskKeyframes = masks;
        edit.focusKeyframes = focuses;
        edit.tapTapKeyframes = tapTaps;
    }

    [[nodiscard]] Seconds duration() const { return FragmentMap(fragments).duration(); }
};

} // namespace morvelin
