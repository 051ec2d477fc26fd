#include "timeline/SpanEdits.h"

#include <algorithm>

#include "timeline/FragmentSurgery.h"
#include "timeline/TrackLimits.h"
#include "timeline/TrackRetiming.h"

namespace morvelin {

namespace {

using Reason = SpanRefusal::Reason;

struct Span {
    EditTime from, to;
    Seconds duration; ///< of the timeline
};

Result<Span, SpanRefusal> checkedSpan(const TimelineTracks& tracks, EditTime from, EditTime to) {
    const Seconds duration = tracks.duration();
    if (!(duration > 0_s)) return failure(SpanRefusal{Reason::EmptyTimeline});
    for (const EditTime time : {from, to}) {
        const bool isInside = time >= EditTime(-kRoundedTime) && time <= EditTime(duration + kRoundedTime);
        if (!isInside) return failure(SpanRefusal{Reason::OutsideTimeline, time, duration});
    }
    return Span{std::clamp(from, EditTime(), EditTime(duration)), std::clamp(to, EditTime(), EditTime(duration)),
                duration};
}

bool isNearStart(EditTime time) { return atMost(time.sinceZero(), kLeastPiece); }
bool isNearEnd(EditTime time, Seconds duration) { return atLeast(time.sinceZero(), duration - kLeastPiece); }

bool isSpeedInRange(double speed) { return atLeast(speed, kSlowestSpeed) && atMost(speed, kFastestSpeed); }

/// The tracks with fragments of the same places at other speeds.
SpanEdit retimedTo(TimelineTracks tracks, std::vector<VideoFragment> before, std::vector<VideoFragment> after) {
    const FragmentMap from(std::move(before));
    const FragmentMap to(after);
    tracks.fragments = std::move(after);
    retime(tracks, TimeWarp::retiming(from, to));
    return {std::move(tracks), from.duration() - to.duration()};
}

} // namespace

Result<SpanEdit, SpanRefusal> cut(const TimelineTracks& tracks, EditTime from, EditTime to, IdSource& ids) {
    const auto span = checkedSpan(tracks, from, to);
    if (!span) return failure(span.error());
    if (isNearStart(span->from) && isNearEnd(span->to, span->duration))
        return failure(SpanRefusal{Reason::WouldEmptyTimeline});

    const auto isolated = FragmentSurgery::isolate(tracks.fragments, span->from, span->to, ids);
    if (!isolated) return failure(SpanRefusal{Reason::SpanTooShort});
    SpanEdit edit{tracks, isolated->to - isolated->from};
    edit.tracks.fragments = FragmentSurgery::without(*isolated, tracks.fragments);
    if (!(edit.tracks.duration() > 0_s)) return failure(SpanRefusal{Reason::WouldEmptyTimeline});
    retime(edit.tracks, TimeWarp::removal(isolated->from, isolated->to, span->duration));
    return edit;
}

Result<SpanEdit, SpanRefusal> trim(const TimelineTracks& tracks, EditTime start, EditTime end, IdSource& ids) {
    const auto kept = checkedSpan(tracks, start, end);
    if (!kept) return failure(kept.error());
    if (atMost(kept->to, kept->from)) return failure(SpanRefusal{Reason::WouldEmptyTimeline});

    SpanEdit edit{tracks, 0_s};
    const auto remove = [&](EditTime from, EditTime to) -> std::optional<SpanRefusal> {
        auto shorter = cut(edit.tracks, from, to, ids);
        if (!shorter) return shorter.error();
        edit = {std::move(shorter->tracks), edit.removed + shorter->removed};
        return std::nullopt;
    };
    if (!isNearEnd(kept->to, kept->duration))
        if (const auto refusal = remove(kept->to, EditTime(kept->duration))) return failure(*refusal);
    if (!isNearStart(kept->from))
        if (const auto refusal = remove(EditTime(), kept->from)) return failure(*refusal);
    return edit;
}

Result<SpanEdit, SpanRefusal> setSpeed(const TimelineTracks& tracks, EditTime from, EditTime to, double speed,
                                       IdSource& ids) {
    const auto span = checkedSpan(tracks, from, to);
    if (!span) return failure(span.error());
    if (!isSpeedInRange(speed)) return failure(SpanRefusal{Reason::SpeedOutOfRange, {}, {}, speed});

    auto isolated = FragmentSurgery::isolate(tracks.fragments, span->from, span->to, ids);
    if (!isolated) return failure(SpanRefusal{Reason::SpanTooShort});
    std::vector<VideoFragment> faster = isolated->fragments;
    for (std::size_t i = isolated->first; i < isolated->first + isolated->count; ++i)
        if (faster[i].speed > 0) faster[i].speed = speed;
    return retimedTo(tracks, std::move(isolated->fragments), std::move(faster));
}

Result<SpanEdit, SpanRefusal> setFragmentSpeed(const TimelineTracks& tracks, const UUID& fragment, double speed) {
    if (!isSpeedInRange(speed)) return failure(SpanRefusal{Reason::SpeedOutOfRange, {}, {}, speed});
    std::vector<VideoFragment> faster = tracks.fragments;
    const auto changed = std::ranges::find(faster, fragment, &VideoFragment::id);
    if (changed == faster.end()) return failure(SpanRefusal{Reason::UnknownFragment});
    changed->speed = speed;
    return retimedTo(tracks, tracks.fragments, std::move(faster));
}

} // namespace morvelin
