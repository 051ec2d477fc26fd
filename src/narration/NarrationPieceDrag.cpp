#include <algorithm>
#include <cmath>

#include "narration/AudioDrag.h"
#include "narration/AudioLayout.h"

namespace morvelin::AudioDrag {

namespace {

constexpr Seconds kShortestSound = 0.02_s;

EditTime endOf(const NarrationPiece& piece) { return piece.timelineStart + (piece.takeEnd - piece.takeStart); }

bool touch(const NarrationPiece& before, const NarrationPiece& after) {
    return std::abs((before.takeEnd - after.takeStart).value) <= AudioLayout::kSlack &&
           std::abs((endOf(before) - after.timelineStart).value) <= AudioLayout::kSlack;
}

void trimStart(NarrationPiece& piece, Seconds by, Seconds earliest) {
    const Seconds start = std::max(std::min(piece.takeStart + by, piece.takeEnd - kShortestSound), earliest);
    piece.timelineStart += start - piece.takeStart;
    piece.takeStart = start;
}

void trimEnd(NarrationPiece& piece, Seconds by, Seconds latest) {
    piece.takeEnd = std::max(std::min(piece.takeEnd + by, latest), piece.takeStart + kShortestSound);
}

} // namespace

std::optional<NarrationPieceDragState> began(Kind kind, const UUID& trackID, const UUID& pieceID,
                                             std::vector<NarrationPiece> pieces) {
    if (std::ranges::find(pieces, pieceID, &NarrationPiece::id) == pieces.end()) return std::nullopt;
    std::ranges::stable_sort(pieces, {}, &NarrationPiece::takeStart);
    return NarrationPieceDragState{trackID, pieceID, kind, pieces, pieces, false};
}

NarrationPieceDragState dragged(NarrationPieceDragState state, Seconds by, Seconds takeDuration) {
    state.pieces = state.base;
    const auto piece = std::ranges::find(state.pieces, state.pieceID, &NarrationPiece::id);
    if (piece == state.pieces.end()) return state;
    const bool isFirst = piece == state.pieces.begin();
    const bool isLast = piece + 1 == state.pieces.end();
    switch (state.kind) {
    case Kind::Move: piece->timelineStart += by; break;
    case Kind::TrimStart: trimStart(*piece, by, isFirst ? 0_s : std::prev(piece)->takeEnd); break;
    case Kind::TrimEnd: trimEnd(*piece, by, isLast ? takeDuration : (piece + 1)->takeStart); break;
    }
    state.joins = (!isFirst && touch(*std::prev(piece), *piece)) || (!isLast && touch(*piece, *(piece + 1)));
    return state;
}

std::vector<NarrationPiece> ended(const NarrationPieceDragState& state) {
    if (!state.joins) return state.pieces;
    std::vector<NarrationPiece> joined;
    for (const NarrationPiece& piece : state.pieces) {
        const bool concernsIt = !joined.empty() && (piece.id == state.pieceID || joined.back().id == state.pieceID);
        if (concernsIt && touch(joined.back(), piece)) {
            joined.back().takeEnd = piece.takeEnd;
            joined.back().id = state.pieceID;
        } else {
            joined.push_back(piece);
        }
    }
    return joined;
}

} // namespace morvelin::AudioDrag
