#include "narration/PieceCanvas.h"

namespace morvelin::AudioLayout {

void PieceCanvas::place(const Piece& piece) {
    const EditTime start = piece.timelineStart;
    const EditTime end = piece.timelineEnd;
    if (!(start < end)) return;

    auto place = m_pieces.upper_bound(start);
    if (place != m_pieces.begin() && std::prev(place)->second.timelineEnd > start) --place;
    while (place != m_pieces.end() && place->first < end) {
        const Piece hidden = place->second;
        place = m_pieces.erase(place);
        if ((start - hidden.timelineStart).value > kSlack)
            m_pieces.emplace(hidden.timelineStart, hidden.part(hidden.timelineStart, start));
        if ((hidden.timelineEnd - end).value > kSlack) m_pieces.emplace(end, hidden.part(end, hidden.timelineEnd));
    }
    m_pieces.insert_or_assign(start, piece);
}

std::vector<Piece> PieceCanvas::pieces() const {
    std::vector<Piece> all;
    all.reserve(m_pieces.size());
    for (const auto& [_, piece] : m_pieces) all.push_back(piece);
    return all;
}

} // namespace morvelin::AudioLayout
