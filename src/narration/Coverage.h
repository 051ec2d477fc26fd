// A set of spans of the timeline; spans that touch are one. Owned by one calculation.
#pragma once

#include <map>
#include <span>
#include <vector>

#include "narration/AudioLayout.h"

namespace morvelin::AudioLayout {

/// O(log n) for each span added, apart from the spans that it swallows.
class Coverage {
public:
    Coverage() = default;
    explicit Coverage(std::span<const Piece> pieces);

    void add(EditRange range);
    void add(std::span<const Piece> pieces);
    /// Whether the moment lies in a span, with the usual slack at both ends.
    [[nodiscard]] bool holds(EditTime t) const;
    /// The parts of the piece that lie in no span.
    [[nodiscard]] std::vector<Piece> leftOf(const Piece& piece) const;
    [[nodiscard]] std::vector<EditRange> spans() const;

private:
    using Spans = std::map<EditTime, EditTime>;

    /// The first span that ends at or after the moment.
    [[nodiscard]] Spans::const_iterator firstEndingFrom(EditTime t) const;

    Spans m_spans; ///< start to end
};

} // namespace morvelin::AudioLayout
