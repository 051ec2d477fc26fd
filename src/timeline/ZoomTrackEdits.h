// Edits of single zooms: inserting, moving, re-aiming and removing ramps with the position keys that belong to them.
#pragma once

#include "core/base/Result.h"
#include "timeline/ZoomEngine.h"
#include "timeline/ZoomPlaces.h"

namespace morvelin::ZoomTrackEdits {

inline constexpr double kLeastFactor = 1;
inline constexpr double kMostFactor = 10;

/// Why the zoom track was left as it was; the caller words it.
struct Refusal {
    enum class Reason {
        UnknownZoom,
        FactorOutOfRange, ///< `factor`, outside 1 to 10
        OutsideTimeline,  ///< `start` lies before 0 or past the timeline's end
        Overlap,          ///< the ramp `start`–`end` runs into another; `free` is the span around it
        StartZoomIsFixed, ///< the opening key's timing cannot change
        FirstZoomCannotBeDeleted,
        NoSeamBeforeFirstZoom,
        NoRoomForSeam,              ///< the ramps on both sides leave no place for it
        PullBackOwnsNoPositionKeys, ///< `factor`, at most 1
        NoHold,                     ///< the zoom holds for 0.001 s at most: there is nothing to frame
    };

    Reason reason;
    double factor = 0;
    EditTime start{};
    EditTime end{};
    FreeSpan free{};
};

struct NewZoom {
    EditTime at;
    double factor = 1;
    Seconds transition{0.6};
    ZoomTransitionType curve = ZoomTransitionType::Smooth;
    std::optional<NormalizedPoint> aim; ///< without one the position track stays as it is
};

struct Insertion {
    ZoomTracks tracks;
    UUID id;
    std::optional<UUID> replaced;
};

/// Adds a ramp of 0.05 s to the timeline's length, or puts it in the place of one that starts at the same time (0.0005 s of slack, since clients see
/// rounded times); that one's position keys go over to it. An aimed zoom-in is given a key where its ramp ends and one
/// where its hold ends, unless keys stand there. Centres want a refit after each of these edits.
[[nodiscard]] Result<Insertion, Refusal> insertZoom(ZoomTracks tracks, const NewZoom& zoom, EditTime timelineEnd,
                                                    IdSource& ids);

/// What is absent keeps its value.
struct ZoomChange {
    std::optional<EditTime> start;
    std::optional<Seconds> transition; ///< 0.05 s to the timeline's length is taken
    std::optional<double> factor;
    std::optional<ZoomTransitionType> curve;
    std::optional<NormalizedPoint> aim;
};

/// A moved ramp takes along the position keys that it owns, a longer one the key where it ends. Aiming moves them all;
/// where there is none, one is made where the ramp ends.
[[nodiscard]] Result<ZoomTracks, Refusal> updateZoom(ZoomTracks tracks, const UUID& id, const ZoomChange& change,
                                                     EditTime timelineEnd, IdSource& ids);

/// Removes a ramp and the keys that it owns; the zoom before it holds on, aimed as it was.
[[nodiscard]] Result<ZoomTracks, Refusal> removeZoom(ZoomTracks tracks, const UUID& id, EditTime timelineEnd);

/// A still video at 1×: the baseline zoom alone, and no keys of ramps.
[[nodiscard]] ZoomTracks withoutZooms(ZoomTracks tracks, IdSource& ids);

} // namespace morvelin::ZoomTrackEdits
