#include "render/EditComposition.h"

#include <algorithm>
#include <cmath>

#include "timeline/Tolerance.h"

namespace morvelin {

namespace {

constexpr Seconds kTimeBaseSlack{5e-4}; ///< the most that a time base of milliseconds moves a frame
constexpr Seconds kBeforeTheCut{1e-6};  ///< keeps a moment on this side of a cut

bool hasFiniteNumbers(const VideoFragment& fragment) {
    return std::isfinite(fragment.sourceStart.value) && std::isfinite(fragment.sourceEnd.value) &&
           std::isfinite(fragment.speed);
}

std::vector<VideoFragment> inOrder(std::span<const VideoFragment> fragments) {
    std::vector<VideoFragment> sorted(fragments.begin(), fragments.end());
    std::ranges::stable_sort(sorted, {}, &VideoFragment::order);
    return sorted;
}

} // namespace

std::string FragmentCompositionError::description() const {
    switch (kind) {
    case Kind::NoVideoTrack: return "No video track in recording";
    case Kind::CompositionFailed: return "Could not build edit composition";
    }
    return {};
}

Seconds EditComposition::timelineDuration() const {
    return m_segments.empty() ? 0_s : m_segments.back().end.sinceZero();
}

const EditComposition::Segment& EditComposition::segmentAt(EditTime t) const {
    const auto later = std::ranges::upper_bound(m_segments, t + Seconds(kTolerance), {}, &Segment::start);
    return later == m_segments.begin() ? m_segments.front() : *std::prev(later);
}

SourceTime EditComposition::sourceTime(EditTime t) const {
    if (m_segments.empty()) return SourceTime(0);
    const Segment& segment = segmentAt(t);
    return std::clamp(segment.sourceStart + (t - segment.start) * segment.speed, segment.sourceStart,
                      segment.sourceEnd);
}

SourceTime EditComposition::pictureTime(EditTime t) const {
    if (m_segments.empty()) return SourceTime(0);
    const Segment& segment = segmentAt(t);
    const SourceTime latest = std::max(segment.sourceStart, segment.sourceEnd - kBeforeTheCut);
    return std::min(sourceTime(t) + kTimeBaseSlack, latest);
}

Result<EditComposition, FragmentCompositionError> FragmentCompositionBuilder::build(
    const MovieProperties& movie, std::span<const VideoFragment> fragments) {
    using Kind = FragmentCompositionError::Kind;
    if (movie.size.width <= 0 || movie.size.height <= 0) return failure(FragmentCompositionError{Kind::NoVideoTrack});
    if (!std::ranges::all_of(fragments, hasFiniteNumbers))
        return failure(FragmentCompositionError{Kind::CompositionFailed});

    std::vector<EditComposition::Segment> segments;
    EditTime end;
    for (const VideoFragment& fragment : inOrder(fragments)) {
        const SourceTime from = std::max(fragment.sourceStart, movie.start);
        const SourceTime to = std::min(fragment.sourceEnd, movie.end);
        if (fragment.speed <= 0 || to - from <= kShortestPiece + Seconds(kTolerance)) continue;

        const double speed = playedSpeed(fragment.speed);
        const EditTime start = end;
        end = start + (to - from) / speed;
        segments.push_back({start, end, from, to, speed});
    }
    return EditComposition(std::move(segments));
}

} // namespace morvelin
