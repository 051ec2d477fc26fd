// Dragging sound along the timeline: a fragment's own against its picture, or a take's pieces. Pure functions over the
// state of one drag, which the editor holds from press to release.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "core/AudioTracks.h"
#include "core/VideoFragment.h"

namespace morvelin::AudioDrag {

enum class Kind { Move, TrimStart, TrimEnd };

/// Fragments that were one before they were split, and would be one again.
struct Merge {
    std::vector<VideoFragment> fragments; ///< the whole list with the merge done
    UUID survivorID;
    std::vector<UUID> absorbed;

    bool operator==(const Merge&) const = default;
};

} // namespace morvelin::AudioDrag

namespace morvelin {

/// A drag of a fragment's sound.
struct AudioDragState {
    UUID fragmentID;
    AudioDrag::Kind kind = AudioDrag::Kind::Move;
    std::optional<FragmentAudio> base;  ///< before the drag
    std::optional<FragmentAudio> audio; ///< now
    std::optional<AudioDrag::Merge> merge;

    bool operator==(const AudioDragState&) const = default;
};

/// A drag of one piece of a take.
struct NarrationPieceDragState {
    UUID trackID;
    UUID pieceID;
    AudioDrag::Kind kind = AudioDrag::Kind::Move;
    std::vector<NarrationPiece> base;   ///< before the drag
    std::vector<NarrationPiece> pieces; ///< now
    bool joins = false; ///< the piece touches its neighbour on the timeline and in the take: the end makes them one

    bool operator==(const NarrationPieceDragState&) const = default;
};

} // namespace morvelin

namespace morvelin::AudioDrag {

/// Nothing for an unknown fragment, or one without length.
[[nodiscard]] std::optional<AudioDragState> began(Kind kind, const UUID& fragmentID,
                                                  std::span<const VideoFragment> fragments);
/// The state after `by` seconds of the timeline, counted from the drag's beginning. Sound stays within the recording
/// and keeps 0.02 s. A trim outward that passes whole neighbours which continue the same source proposes a merge.
[[nodiscard]] AudioDragState dragged(AudioDragState state, Seconds by, Seconds recordingLength,
                                     std::span<const VideoFragment> fragments);
/// The fragments once the drag has ended: merged, or with the fragment's sound as it now is.
[[nodiscard]] std::vector<VideoFragment> ended(const AudioDragState& state, std::span<const VideoFragment> fragments);

/// The fragment's sound, or nothing where it lies unshifted under the whole picture, as it does without a record.
[[nodiscard]] std::optional<FragmentAudio> simplified(const VideoFragment& fragment,
                                                      const std::optional<FragmentAudio>& audio);

/// Nothing for an unknown piece.
[[nodiscard]] std::optional<NarrationPieceDragState> began(Kind kind, const UUID& trackID, const UUID& pieceID,
                                                           std::vector<NarrationPiece> pieces);
/// A trim stops at the neighbouring piece in the take, so that nothing is said twice, and keeps 0.02 s.
[[nodiscard]] NarrationPieceDragState dragged(NarrationPieceDragState state, Seconds by, Seconds takeDuration);
/// The pieces once the drag has ended; those that touch became one, with the id of the dragged piece.
[[nodiscard]] std::vector<NarrationPiece> ended(const NarrationPieceDragState& state);

} // namespace morvelin::AudioDrag
