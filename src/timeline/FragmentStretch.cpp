#include "timeline/FragmentStretch.h"

#include <algorithm>

#include "timeline/FragmentSurgery.h"
#include "timeline/TrackLimits.h"
#include "timeline/TrackRetiming.h"

namespace morvelin {

namespace {

/// How much source time beside the fragment no other one shows.
Seconds freeFootage(const std::vector<VideoFragment>& fragments, const VideoFragment& fragment,
                    FragmentStretchSide side, Seconds recordingLength) {
    SourceTime first{};
    SourceTime last(recordingLength);
    for (const VideoFragment& other : fragments) {
        if (other.id == fragment.id) continue;
        if (atMost(other.sourceEnd, fragment.sourceStart)) first = std::max(first, other.sourceEnd);
        if (atLeast(other.sourceStart, fragment.sourceEnd)) last = std::min(last, other.sourceStart);
    }
    switch (side) {
    case FragmentStretchSide::Left: return std::max(fragment.sourceStart - first, 0_s);
    case FragmentStretchSide::Right: return std::max(last - fragment.sourceEnd, 0_s);
    }
    return 0_s;
}

/// The fragment with that much more source time on one side, or less when `growth` is below 0.
VideoFragment grown(const VideoFragment& fragment, FragmentStretchSide side, Seconds growth) {
    switch (side) {
    case FragmentStretchSide::Left: return FragmentSurgery::partFrom(fragment, fragment.sourceStart - growth);
    case FragmentStretchSide::Right: return FragmentSurgery::partBefore(fragment, fragment.sourceEnd + growth);
    }
    return fragment;
}

/// What a change by `growth` of edit time does to the timeline around the fragment's place.
TimeWarp warpOf(const FragmentMap::Span& span, FragmentStretchSide side, Seconds growth, Seconds duration) {
    const bool isLeft = side == FragmentStretchSide::Left;
    const EditTime edge = isLeft ? span.start : span.end();
    if (growth > 0_s) return TimeWarp::insertion(edge, growth, duration);
    return isLeft ? TimeWarp::removal(edge, edge - growth, duration) : TimeWarp::removal(edge + growth, edge, duration);
}

} // namespace

Result<SpanEdit, SpanRefusal> stretchFragment(const TimelineTracks& tracks, const UUID& fragment,
                                              FragmentStretchSide side, EditTime to, Seconds recordingLength) {
    const FragmentMap map(tracks.fragments);
    const auto spans = map.spans();
    const auto span = std::ranges::find(spans, fragment, [](const auto& each) { return each.fragment.id; });
    if (span == spans.end()) return failure(SpanRefusal{SpanRefusal::Reason::UnknownFragment});
    SpanEdit edit{tracks, 0_s};
    if (!(span->length > 0_s)) return edit;

    const double speed = span->fragment.speed;
    const Seconds wished = side == FragmentStretchSide::Left ? span->start - to : to - span->end();
    const Seconds spare = span->length - std::max(kLeastPiece, kLeastPiece / speed);
    const Seconds least = std::min(-spare, 0_s);
    const Seconds most = freeFootage(tracks.fragments, span->fragment, side, recordingLength) / speed;
    const Seconds growth = std::clamp(wished, least, most);
    if (growth == 0_s) return edit;

    *std::ranges::find(edit.tracks.fragments, fragment, &VideoFragment::id) = grown(span->fragment, side,
                                                                                    growth * speed);
    edit.removed = -growth;
    retime(edit.tracks, warpOf(*span, side, growth, map.duration()));
    return edit;
}

} // namespace morvelin
