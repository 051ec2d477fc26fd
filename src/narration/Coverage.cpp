#include "narration/Coverage.h"

namespace morvelin::AudioLayout {

Coverage::Coverage(std::span<const Piece> pieces) { add(pieces); }

void Coverage::add(std::span<const Piece> pieces) {
    for (const Piece& piece : pieces) add({piece.timelineStart, piece.timelineEnd});
}

void Coverage::add(EditRange range) {
    auto place = firstEndingFrom(range.start - Seconds(kSlack));
    while (place != m_spans.end() && place->first <= range.end + Seconds(kSlack)) {
        range.start = std::min(range.start, place->first);
        range.end = std::max(range.end, place->second);
        place = m_spans.erase(place);
    }
    m_spans.emplace(range.start, range.end);
}

Coverage::Spans::const_iterator Coverage::firstEndingFrom(EditTime t) const {
    const auto next = m_spans.upper_bound(t);
    if (next == m_spans.begin()) return next;
    const auto before = std::prev(next);
    return before->second >= t ? before : next;
}

bool Coverage::holds(EditTime t) const {
    const auto place = firstEndingFrom(t - Seconds(kSlack));
    return place != m_spans.end() && place->first <= t + Seconds(kSlack);
}

std::vector<Piece> Coverage::leftOf(const Piece& piece) const {
    std::vector<Piece> left;
    EditTime from = piece.timelineStart;
    const auto keep = [&](EditTime to) {
        if ((to - from).value > kSlack) left.push_back(piece.part(from, to));
    };
    for (auto span = firstEndingFrom(from); span != m_spans.end() && span->first < piece.timelineEnd; ++span) {
        keep(span->first);
        from = std::max(from, span->second);
    }
    keep(piece.timelineEnd);
    return left;
}

std::vector<EditRange> Coverage::spans() const {
    std::vector<EditRange> all;
    for (const auto& [start, end] : m_spans) all.push_back({start, end});
    return all;
}

} // namespace morvelin::AudioLayout
