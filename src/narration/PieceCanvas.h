// Pieces that are laid one over the other, where the later takes the place of the earlier. Owned by one layout.
#pragma once

#include <map>
#include <vector>

#include "narration/AudioLayout.h"

namespace morvelin::AudioLayout {

/// The same as `placing` piece by piece, but in O(log n) for each: its pieces never overlap.
class PieceCanvas {
public:
    /// Punches the span out of what is there. A piece without length leaves no trace.
    void place(const Piece& piece);
    /// By time.
    [[nodiscard]] std::vector<Piece> pieces() const;

private:
    std::map<EditTime, Piece> m_pieces; ///< by their starts
};

} // namespace morvelin::AudioLayout
