#include "narration/AudioTimes.h"

#include <cmath>

namespace morvelin::AudioLayout {

namespace {

std::vector<Piece> piecesOf(const FragmentMap& map) {
    std::vector<Piece> pieces;
    for (const FragmentMap::Span& span : map.spans())
        if (span.length > 0_s)
            pieces.push_back(
                {span.fragment.id, span.start, span.end(), span.fragment.sourceStart, span.fragment.speed});
    return pieces;
}

/// How far a moment lies outside a piece.
Seconds distance(const Piece& piece, EditTime t) {
    return std::max({piece.timelineStart - t, t - piece.timelineEnd, 0_s});
}

} // namespace

SourceIndex::SourceIndex(std::span<const Piece> pieces) {
    m_entries.reserve(pieces.size());
    for (std::size_t i = 0; i < pieces.size(); ++i) m_entries.push_back({pieces[i], i, pieces[i].sourceEnd()});
    std::ranges::stable_sort(m_entries, {}, [](const Entry& entry) { return entry.piece.sourceStart; });
    for (std::size_t i = 1; i < m_entries.size(); ++i)
        m_entries[i].furthest = std::max(m_entries[i].furthest, m_entries[i - 1].furthest);
}

template <class Visit>
void SourceIndex::meeting(SourceTime from, SourceTime to, double slack, Visit visit) const {
    const SourceTime low = from - Seconds(slack);
    const SourceTime high = to + Seconds(slack);
    for (auto entry = std::ranges::lower_bound(m_entries, low, {}, &Entry::furthest);
         entry != m_entries.end() && entry->piece.sourceStart <= high; ++entry)
        if (entry->piece.sourceEnd() >= low) visit(*entry);
}

std::optional<std::size_t> SourceIndex::holder(SourceTime s, double slack) const {
    std::optional<std::size_t> first;
    meeting(s, s, slack, [&](const Entry& entry) { first = std::min(first.value_or(entry.index), entry.index); });
    return first;
}

std::optional<EditRange> SourceIndex::place(SourceTime from, SourceTime to, double slack) const {
    std::optional<EditRange> range;
    meeting(from, to, slack, [&](const Entry& entry) {
        const EditRange part{entry.piece.timelineAt(from), entry.piece.timelineAt(to)};
        if (!range) range = part;
        range->start = std::min(range->start, part.start);
        range->end = std::max(range->end, part.end);
    });
    return range;
}

Times::Times(std::span<const VideoFragment> fragments, std::optional<std::vector<Piece>> pieces)
    : m_fragments({fragments.begin(), fragments.end()}),
      m_pieces(std::move(pieces)) {
    if (m_pieces) std::ranges::stable_sort(*m_pieces, {}, &Piece::timelineStart);
    m_index = SourceIndex(m_pieces ? *m_pieces : piecesOf(m_fragments));
}

std::optional<EditTime> Times::timelineTime(SourceTime s) const {
    if (!m_pieces) return m_fragments.editTime(s);
    const auto holder = m_index.holder(s, kSlack);
    return holder ? std::optional((*m_pieces)[*holder].timelineAt(s)) : std::nullopt;
}

std::optional<SourceTime> Times::sourceTime(EditTime t) const {
    if (!m_pieces) {
        const auto moment = m_fragments.sourceTime(t);
        return moment ? std::optional(moment->time) : std::nullopt;
    }
    const auto piece = std::ranges::lower_bound(*m_pieces, t - Seconds(kSlack), {}, &Piece::timelineEnd);
    if (piece == m_pieces->end() || piece->timelineStart > t + Seconds(kSlack)) return std::nullopt;
    return piece->sourceAt(t);
}

std::optional<SourceTime> Times::nearestSourceTime(EditTime t) const {
    if (!m_pieces) {
        const auto moment = m_fragments.heldSourceTime(t);
        return moment ? std::optional(moment->time) : std::nullopt;
    }
    if (const auto heard = sourceTime(t)) return heard;
    if (m_pieces->empty()) return std::nullopt;
    const auto after = std::ranges::lower_bound(*m_pieces, t, {}, &Piece::timelineEnd);
    if (after == m_pieces->end()) return m_pieces->back().sourceEnd();
    if (after == m_pieces->begin()) return after->sourceStart;
    const auto before = std::prev(after);
    return distance(*before, t) <= distance(*after, t) ? before->sourceEnd() : after->sourceStart;
}

std::optional<EditRange> Times::sourceSpan(SourceTime from, SourceTime to) const {
    if (m_pieces) return m_index.place(from, to, kSlack);
    return m_index.place(from, to, from < to ? -kSlack : 0);
}

} // namespace morvelin::AudioLayout
