// The recording's clock and the timeline's, as its sound is laid out. Owned by whoever maps many moments of one edit.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "narration/AudioLayout.h"
#include "timeline/FragmentMap.h"

namespace morvelin::AudioLayout {

/// Finds, among pieces in any order of the file's time, those that hold a moment or meet a span.
class SourceIndex {
public:
    SourceIndex() = default;
    explicit SourceIndex(std::span<const Piece> pieces);

    /// The first piece of the list that holds the moment, with `slack` seconds at both ends.
    [[nodiscard]] std::optional<std::size_t> holder(SourceTime s, double slack) const;
    /// From the smallest to the largest mapped place of the span, over all pieces that it meets, or comes within `slack`
    /// seconds of. With a negative slack it must share that much with them.
    [[nodiscard]] std::optional<EditRange> place(SourceTime from, SourceTime to, double slack) const;

private:
    struct Entry {
        Piece piece;
        std::size_t index;   ///< in the list
        SourceTime furthest; ///< the largest end of the file's time up to here
    };

    /// Calls `visit` for each piece that meets the span.
    template <class Visit>
    void meeting(SourceTime from, SourceTime to, double slack, Visit visit) const;

    std::vector<Entry> m_entries; ///< by start in the file
};

/// Without pieces the sound follows its picture, and the fragments tell; an empty list means that nothing is heard.
class Times {
public:
    Times(std::span<const VideoFragment> fragments, std::optional<std::vector<Piece>> pieces);

    [[nodiscard]] const FragmentMap& fragments() const { return m_fragments; }
    [[nodiscard]] Seconds duration() const { return m_fragments.duration(); }

    /// When a moment of the recording is heard.
    [[nodiscard]] std::optional<EditTime> timelineTime(SourceTime s) const;
    /// Which moment of the recording is heard.
    [[nodiscard]] std::optional<SourceTime> sourceTime(EditTime t) const;
    /// The same, or where nothing is heard the nearer end of the piece that is closest in time.
    [[nodiscard]] std::optional<SourceTime> nearestSourceTime(EditTime t) const;
    /// Where a span of the recording lies on the timeline. Without pieces it must overlap a fragment, not just touch it.
    [[nodiscard]] std::optional<EditRange> sourceSpan(SourceTime from, SourceTime to) const;

    [[nodiscard]] bool hasPieces() const { return m_pieces.has_value(); }

private:
    FragmentMap m_fragments;
    std::optional<std::vector<Piece>> m_pieces; ///< by time
    SourceIndex m_index;                        ///< of the pieces, or of the fragments where there are none
};

} // namespace morvelin::AudioLayout
