#include "timeline/FragmentSurgery.h"

#include <algorithm>

#include "timeline/FragmentMap.h"
#include "timeline/TrackLimits.h"

namespace morvelin::FragmentSurgery {

namespace {

/// A place on the edit timeline, and the fragment that it lies in.
struct Place {
    std::size_t span;
    SourceTime source;
    Seconds into;
    Seconds length;

    [[nodiscard]] bool isClearOfEdges() const { return isClear(into, length); }

    [[nodiscard]] bool isClearOnSource(const VideoFragment& fragment) const {
        return isClear(source - fragment.sourceStart, fragment.sourceEnd - fragment.sourceStart);
    }

private:
    static bool isClear(Seconds into, Seconds length) {
        return !atMost(into, kLeastPiece) && !atLeast(into, length - kLeastPiece);
    }
};

std::optional<Place> placeOf(const FragmentMap& map, EditTime time) {
    const auto moment = map.sourceTime(time);
    if (!moment) return std::nullopt;
    const auto& span = map.spans()[moment->span];
    return Place{moment->span, moment->time, time - span.start, span.length};
}

void renumber(std::vector<VideoFragment>& fragments) {
    std::int64_t order = 0;
    for (VideoFragment& fragment : fragments) fragment.order = order++;
}

std::vector<VideoFragment> inOrder(const FragmentMap& map) {
    std::vector<VideoFragment> fragments;
    fragments.reserve(map.spans().size() + 1);
    for (const auto& span : map.spans()) fragments.push_back(span.fragment);
    renumber(fragments);
    return fragments;
}

/// Splits at `time`, or finds the edge that it lies too near to. `fragments` is the list after it.
EditTime splitOrSnap(std::vector<VideoFragment>& fragments, EditTime time, IdSource& ids) {
    const FragmentMap map(fragments);
    if (auto parts = split(fragments, time, ids)) {
        fragments = std::move(parts->fragments);
        return time;
    }
    fragments = inOrder(map);
    const auto place = placeOf(map, time);
    if (!place) return time < EditTime() ? EditTime() : EditTime(map.duration());
    const auto& span = map.spans()[place->span];
    return place->into + place->into <= place->length ? span.start : span.end();
}

} // namespace

bool canSplit(const std::vector<VideoFragment>& fragments, EditTime time) {
    const auto place = placeOf(FragmentMap(fragments), time);
    return place && place->isClearOfEdges();
}

std::optional<SplitResult> split(const std::vector<VideoFragment>& fragments, EditTime time, IdSource& ids) {
    const FragmentMap map(fragments);
    const auto place = placeOf(map, time);
    if (!place || !place->isClearOfEdges()) return std::nullopt;
    const VideoFragment& whole = map.spans()[place->span].fragment;
    if (!place->isClearOnSource(whole)) return std::nullopt;

    SplitResult result{inOrder(map), ids.next()};
    const auto left = result.fragments.begin() + static_cast<std::ptrdiff_t>(place->span);
    VideoFragment right = partFrom(*left, place->source);
    right.id = result.rightID;
    *left = partBefore(std::move(*left), place->source);
    result.fragments.insert(left + 1, std::move(right));
    renumber(result.fragments);
    return result;
}

VideoFragment partBefore(VideoFragment fragment, SourceTime s) {
    fragment.sourceEnd = s;
    if (fragment.audio && fragment.audio->end && atLeast(*fragment.audio->end, s)) fragment.audio->end.reset();
    return fragment;
}

VideoFragment partFrom(VideoFragment fragment, SourceTime s) {
    fragment.sourceStart = s;
    if (fragment.audio && fragment.audio->start && atMost(*fragment.audio->start, s)) fragment.audio->start.reset();
    return fragment;
}

std::optional<Isolation> isolate(const std::vector<VideoFragment>& fragments, EditTime from, EditTime to,
                                 IdSource& ids) {
    Isolation span;
    span.fragments = fragments;
    span.from = splitOrSnap(span.fragments, from, ids);
    span.to = splitOrSnap(span.fragments, to, ids);

    const FragmentMap map(span.fragments);
    for (std::size_t i = 0; i < map.spans().size(); ++i) {
        const auto& piece = map.spans()[i];
        if (!(piece.length > 0_s) || !atLeast(piece.start, span.from) || !atMost(piece.end(), span.to)) continue;
        if (span.count == 0) span.first = i;
        span.count = i + 1 - span.first;
    }
    return span.count > 0 ? std::optional(std::move(span)) : std::nullopt;
}

std::vector<VideoFragment> without(const Isolation& span, const std::vector<VideoFragment>& original) {
    std::vector<VideoFragment> fragments = span.fragments;
    const auto first = fragments.begin() + static_cast<std::ptrdiff_t>(span.first);
    const auto next = first + static_cast<std::ptrdiff_t>(span.count);
    const auto isOriginal = [&](const VideoFragment& fragment) {
        return std::ranges::find(original, fragment.id, &VideoFragment::id) != original.end();
    };
    if (next != fragments.end() && !isOriginal(*next) && isOriginal(*std::prev(next))) next->id = std::prev(next)->id;
    fragments.erase(first, next);
    renumber(fragments);
    return fragments;
}

} // namespace morvelin::FragmentSurgery
