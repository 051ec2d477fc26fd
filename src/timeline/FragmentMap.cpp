#include "timeline/FragmentMap.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "timeline/Tolerance.h"

namespace morvelin {

FragmentMap::FragmentMap(std::vector<VideoFragment> fragments) {
    layOut(std::move(fragments));
    indexSourceTimes();
}

void FragmentMap::layOut(std::vector<VideoFragment> fragments) {
    std::ranges::stable_sort(fragments, {}, &VideoFragment::order);
    m_spans.reserve(fragments.size());
    for (VideoFragment& fragment : fragments) {
        const Seconds length = fragment.length();
        if (length > 0_s) {
            m_showing.push_back(m_spans.size());
            m_showingFrom.emplace_back(m_duration);
        }
        m_spans.push_back({std::move(fragment), EditTime(m_duration), length});
        m_duration += length;
    }
}

/// Fragments may overlap on the source clock and lie in any order there, so the first holder of each moment is found
/// by one sweep over their ends. A closed end is the half-open one just past it, which doubles can say exactly.
void FragmentMap::indexSourceTimes() {
    struct Edge {
        double at;
        std::size_t span;
        bool opens;
    };
    std::vector<Edge> edges;
    for (std::size_t i = 0; i < m_spans.size(); ++i) {
        const VideoFragment& fragment = m_spans[i].fragment;
        const double from = fragment.sourceStart.value - kTolerance;
        const double to = fragment.sourceEnd.value + kTolerance;
        if (!(fragment.speed > 0) || to < from) continue;
        edges.push_back({from, i, true});
        edges.push_back({std::nextafter(to, std::numeric_limits<double>::infinity()), i, false});
    }
    std::ranges::sort(edges, {}, &Edge::at);

    std::set<std::size_t> open;
    for (auto edge = edges.begin(); edge != edges.end();) {
        const double at = edge->at;
        for (; edge != edges.end() && edge->at == at; ++edge) {
            if (edge->opens)
                open.insert(edge->span);
            else
                open.erase(edge->span);
        }
        m_stretches.push_back({at, open.empty() ? std::nullopt : std::optional(*open.begin())});
    }
}

std::optional<EditTime> FragmentMap::editTime(SourceTime s) const {
    const auto next = std::ranges::upper_bound(m_stretches, s.value, {}, &Stretch::from);
    if (next == m_stretches.begin()) return std::nullopt;
    const auto& holder = std::prev(next)->span;
    if (!holder) return std::nullopt;

    const Span& span = m_spans[*holder];
    const Seconds into = std::max(s - span.fragment.sourceStart, 0_s) / span.fragment.speed;
    return span.start + std::min(into, span.length);
}

std::optional<FragmentMap::SourceMoment> FragmentMap::sourceTime(EditTime t) const {
    if (!atLeast(t, EditTime()) || !atMost(t, EditTime(m_duration))) return std::nullopt;
    return heldSourceTime(t);
}

std::optional<FragmentMap::SourceMoment> FragmentMap::heldSourceTime(EditTime t) const {
    if (m_showing.empty()) return std::nullopt;
    const auto later = std::ranges::upper_bound(m_showingFrom, t + Seconds(kTolerance));
    const auto place = std::max<std::ptrdiff_t>(later - m_showingFrom.begin(), 1) - 1;
    const std::size_t index = m_showing[static_cast<std::size_t>(place)];

    const Span& span = m_spans[index];
    const Seconds into = std::max(t - span.start, 0_s) * span.fragment.speed;
    return SourceMoment{std::min(span.fragment.sourceStart + into, span.fragment.sourceEnd), index};
}

} // namespace morvelin
