// Where the recording's own sound plays in the edit, when fragments move, trim or remove theirs. Pure functions.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "core/VideoFragment.h"

namespace morvelin::AudioLayout {

/// Slack of places and lengths on the timeline; what is not longer than this is not there.
inline constexpr double kSlack = 1e-6;

/// A stretch of one file's sound on the timeline.
struct Piece {
    std::optional<UUID> fragmentID; ///< absent where a take plays
    EditTime timelineStart;
    EditTime timelineEnd;
    SourceTime sourceStart; ///< into the recording, or into the take's file
    double speed = 1;

    bool operator==(const Piece&) const = default;

    [[nodiscard]] Seconds length() const { return timelineEnd - timelineStart; }
    [[nodiscard]] SourceTime sourceEnd() const { return sourceStart + length() * speed; }
    /// What plays at a moment of the timeline; the nearer end outside.
    [[nodiscard]] SourceTime sourceAt(EditTime t) const;
    /// When a moment of the file plays; the nearer end outside.
    [[nodiscard]] EditTime timelineAt(SourceTime s) const;
    /// The part between two moments within the piece.
    [[nodiscard]] Piece part(EditTime from, EditTime to) const;
};

/// A stretch of time, both ends included.
template <class Time>
struct Range {
    Time start;
    Time end;

    bool operator==(const Range&) const = default;
};
using EditRange = Range<EditTime>;

/// One fragment's sound before it meets that of the others.
struct Block {
    Piece piece;
    EditRange reach; ///< where the sound would lie if nothing were trimmed
    EditRange clip;  ///< the fragment's own span
    bool isMoved = false;

    bool operator==(const Block&) const = default;
};

/// The blocks in the order of their fragments. Removed sound has none, nor has less than 0.02 s of it.
[[nodiscard]] std::vector<Block> blocks(std::span<const VideoFragment> fragments);

/// The parts of a block's sound outside its fragment's span.
[[nodiscard]] std::vector<Piece> overhangs(const Block& block);

/// The list with `piece` at its end, its span punched out of all others.
[[nodiscard]] std::vector<Piece> placing(const Piece& piece, std::span<const Piece> into);

/// What is heard of the blocks, by time: sound in its place wins over sound that reaches past its fragment, and moved
/// sound wins over both. O(n log n).
[[nodiscard]] std::vector<Piece> pieces(std::span<const Block> blocks, Seconds duration);

/// The part of the piece within [0, `duration`], if it is long enough to be there.
[[nodiscard]] std::optional<Piece> cutToTimeline(const Piece& piece, Seconds duration);

[[nodiscard]] bool hasFragmentAudio(std::span<const VideoFragment> fragments);
[[nodiscard]] bool hasMovedAudio(std::span<const VideoFragment> fragments);

/// The pieces as they would be if nothing were trimmed or removed; shifts stay.
[[nodiscard]] std::vector<Piece> unfolded(std::span<const VideoFragment> fragments);

} // namespace morvelin::AudioLayout
