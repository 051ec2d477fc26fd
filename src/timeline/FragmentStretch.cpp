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

/// An edge, and by how much of the timeline its fragment grows; below 0 it shrinks.
struct Stretch {
    FragmentMap::Span span;
    FragmentStretchSide side;
    Seconds growth;
    Seconds duration; ///< of the timeline before

    [[nodiscard]] EditTime oldEdge() const { return side == FragmentStretchSide::Left ? span.start : span.end(); }
    [[nodiscard]] EditTime newEdge() const {
        return side == FragmentStretchSide::Left ? oldEdge() - growth : oldEdge() + growth;
    }

    /// What it does to the timeline around the fragment's place.
    [[nodiscard]] TimeWarp warp() const {
        if (growth > 0_s) return TimeWarp::insertion(oldEdge(), growth, duration);
        return side == FragmentStretchSide::Left ? TimeWarp::removal(oldEdge(), newEdge(), duration)
                                                 : TimeWarp::removal(newEdge(), oldEdge(), duration);
    }
};

Result<Stretch, SpanRefusal> stretchTo(const std::vector<VideoFragment>& fragments, const UUID& fragment,
                                       FragmentStretchSide side, EditTime to, Seconds recordingLength) {
    const FragmentMap map(fragments);
    const auto spans = map.spans();
    const auto span = std::ranges::find(spans, fragment, [](const auto& each) { return each.fragment.id; });
    if (span == spans.end()) return failure(SpanRefusal{SpanRefusal::Reason::UnknownFragment});
    Stretch stretch{*span, side, 0_s, map.duration()};
    if (!(span->length > 0_s)) return stretch;

    const double speed = span->fragment.speed;
    const Seconds wished = side == FragmentStretchSide::Left ? span->start - to : to - span->end();
    const Seconds spare = span->length - std::max(kLeastPiece, kLeastPiece / speed);
    const Seconds most = freeFootage(fragments, span->fragment, side, recordingLength) / speed;
    stretch.growth = std::clamp(wished, std::min(-spare, 0_s), most);
    return stretch;
}

} // namespace

Result<StretchPreviewState, SpanRefusal> stretchPreview(const std::vector<VideoFragment>& fragments,
                                                        const UUID& fragment, FragmentStretchSide side, EditTime to,
                                                        Seconds recordingLength) {
    const auto stretch = stretchTo(fragments, fragment, side, to, recordingLength);
    if (!stretch) return failure(stretch.error());
    return StretchPreviewState{fragment,
                               side,
                               stretch->oldEdge(),
                               stretch->newEdge(),
                               stretch->oldEdge(),
                               stretch->growth < 0_s,
                               std::max(stretch->growth, -stretch->growth)};
}

Result<SpanEdit, SpanRefusal> stretchFragment(const TimelineTracks& tracks, const UUID& fragment,
                                              FragmentStretchSide side, EditTime to, Seconds recordingLength) {
    const auto stretch = stretchTo(tracks.fragments, fragment, side, to, recordingLength);
    if (!stretch) return failure(stretch.error());
    SpanEdit edit{tracks, -stretch->growth};
    if (stretch->growth == 0_s) return edit;

    const VideoFragment& old = stretch->span.fragment;
    *std::ranges::find(edit.tracks.fragments, fragment, &VideoFragment::id) = grown(old, side,
                                                                                    stretch->growth * old.speed);
    retime(edit.tracks, stretch->warp());
    return edit;
}

} // namespace morvelin
