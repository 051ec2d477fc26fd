// Edits of a span of the timeline: cutting it out, topping and tailing, another speed.
#pragma once

#include "core/base/Result.h"
#include "timeline/TimelineTracks.h"

namespace morvelin {

inline constexpr double kSlowestSpeed = 0.2;
inline constexpr double kFastestSpeed = 40;

/// Why a span was left as it was; the caller words it.
struct SpanRefusal {
    enum class Reason {
        EmptyTimeline,
        OutsideTimeline, ///< `time` lies before 0 or past `duration`
        SpanTooShort,    ///< nothing longer than 0.05 s lies in it
        WouldEmptyTimeline,
        SpeedOutOfRange, ///< `speed`
        UnknownFragment,
    };

    Reason reason;
    EditTime time{};
    Seconds duration{};
    double speed = 0;
};

struct SpanEdit {
    TimelineTracks tracks;
    Seconds removed; ///< by which the timeline got shorter; negative when it got longer
};

/// Removes [`from`, `to`) and closes the gap; keys and cues follow (`retimed`). A time at most 0.0005 s outside counts
/// as the end that it misses, since clients see rounded times. Position centres want a refit after each of these edits.
[[nodiscard]] Result<SpanEdit, SpanRefusal> cut(const TimelineTracks& tracks, EditTime from, EditTime to,
                                                IdSource& ids);

/// Keeps [`start`, `end`): cuts what lies after, then what lies before, each only where it is longer than 0.05 s.
[[nodiscard]] Result<SpanEdit, SpanRefusal> trim(const TimelineTracks& tracks, EditTime start, EditTime end,
                                                 IdSource& ids);

/// Plays the span at `speed` (0.2 to 40), splitting the fragments that cross its ends.
[[nodiscard]] Result<SpanEdit, SpanRefusal> setSpeed(const TimelineTracks& tracks, EditTime from, EditTime to,
                                                     double speed, IdSource& ids);

/// Plays one whole fragment at `speed`.
[[nodiscard]] Result<SpanEdit, SpanRefusal> setFragmentSpeed(const TimelineTracks& tracks, const UUID& fragment,
                                                             double speed);

} // namespace morvelin
