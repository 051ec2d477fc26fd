// Cutting fragments in pieces: the rules that a drag in the editor and an agent's tool share.
#pragma once

#include <optional>
#include <vector>

#include "core/VideoFragment.h"

namespace morvelin::FragmentSurgery {

struct SplitResult {
    std::vector<VideoFragment> fragments; ///< the whole new list, `order` counting from 0
    UUID rightID;                         ///< of the new right-hand piece
};

/// Whether `time` lies more than 0.05 s from both edges of its fragment on the edit timeline. `split` asks for the same
/// on the source clock, which is the stricter one in slow motion.
[[nodiscard]] bool canSplit(const std::vector<VideoFragment>& fragments, EditTime time);

/// Divides the fragment under `time`; nothing when a piece would be too short on either clock. What is seen and heard
/// stays the same, so no key has to move.
[[nodiscard]] std::optional<SplitResult> split(const std::vector<VideoFragment>& fragments, EditTime time,
                                               IdSource& ids);

/// The fragment's part before `s` and the one from `s` on; each keeps the fragment's id. Sound goes along: the left
/// part keeps a trimmed `end`, the right part a trimmed `start`, only where they lie in it.
[[nodiscard]] VideoFragment partBefore(VideoFragment fragment, SourceTime s);
[[nodiscard]] VideoFragment partFrom(VideoFragment fragment, SourceTime s);

/// A span of the edit as whole fragments: the list after both ends have been split.
struct Isolation {
    std::vector<VideoFragment> fragments;
    std::size_t first = 0; ///< of the span's fragments
    std::size_t count = 0;
    EditTime from, to; ///< where the ends landed
};

/// An end that lies too near a fragment's edge to be split there lands on that edge. Nothing when no fragment is left
/// between the ends: the span is too short to be a piece of its own.
[[nodiscard]] std::optional<Isolation> isolate(const std::vector<VideoFragment>& fragments, EditTime from, EditTime to,
                                               IdSource& ids);

/// The list without the span. A fragment that lost its front keeps its id. Empty when the span was all there is.
[[nodiscard]] std::vector<VideoFragment> without(const Isolation& span, const std::vector<VideoFragment>& original);

} // namespace morvelin::FragmentSurgery
