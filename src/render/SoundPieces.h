// An edit's track of sound in samples: what is played when, and where it must fade so that a cut does not click. Pure.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "render/AudioComposition.h"

namespace morvelin {

/// A run of a file's sound in the film, at one speed.
struct SoundPiece {
    std::int64_t start = 0; ///< samples of the film
    std::int64_t end = 0;
    std::int64_t sourceStart = 0; ///< samples of the file
    std::int64_t sourceLength = 0;
    double speed = 1;
    bool fadesIn = true;
    bool fadesOut = true;

    [[nodiscard]] std::int64_t length() const { return end - start; }
    /// The loudness, 0 to 1, of the sample `index` of the piece.
    [[nodiscard]] float gain(std::int64_t index) const;

    bool operator==(const SoundPiece&) const = default;
};

/// The pieces by time, none reaching into the next nor over the film's `length`. What goes on in the file where the one
/// before ends is one piece with it, or, when its speed changes there, begins without a fade.
[[nodiscard]] std::vector<SoundPiece> soundPieces(std::span<const AudioTrack::Segment> segments, std::int64_t length);

} // namespace morvelin
