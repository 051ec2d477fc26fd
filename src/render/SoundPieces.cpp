#include "render/SoundPieces.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/Sound.h"

namespace morvelin {

namespace {

constexpr std::int64_t kFade = kSoundRate / 500; ///< 2 ms
constexpr Seconds kOneSample{1.0 / kSoundRate};

bool isClose(Seconds difference) { return std::abs(difference.value) < kOneSample.value; }

/// Whether a segment goes on in film and file where another ends.
bool goesOn(const AudioTrack::Segment& before, const AudioTrack::Segment& segment) {
    return isClose(segment.start - before.end) && isClose(segment.sourceStart - before.sourceEnd);
}

/// By how much the file's time runs ahead of the film's, at speed 1.
Seconds offsetOf(const AudioTrack::Segment& segment) {
    return segment.sourceStart.sinceZero() - segment.start.sinceZero();
}

SoundPiece pieceOf(const AudioTrack::Segment& segment) {
    return {.start = soundSamples(segment.start.sinceZero()),
            .end = soundSamples(segment.end.sinceZero()),
            .sourceStart = soundSamples(segment.sourceStart.sinceZero()),
            .sourceLength = soundSamples(segment.sourceEnd - segment.sourceStart),
            .speed = segment.speed};
}

} // namespace

float SoundPiece::gain(std::int64_t index) const {
    const std::int64_t fade = std::min(kFade, length() / 2);
    std::int64_t distance = fade;
    if (fadesIn) distance = std::min(distance, index);
    if (fadesOut) distance = std::min(distance, length() - 1 - index);
    if (distance >= fade) return 1;
    const double phase = (static_cast<double>(distance) + 0.5) / static_cast<double>(fade);
    return static_cast<float>(0.5 - 0.5 * std::cos(std::numbers::pi * phase));
}

std::vector<SoundPiece> soundPieces(std::span<const AudioTrack::Segment> segments, std::int64_t length) {
    std::vector<SoundPiece> pieces;
    const AudioTrack::Segment* before = nullptr;
    const AudioTrack::Segment* first = nullptr; // of the last piece
    for (const AudioTrack::Segment& segment : segments) {
        SoundPiece piece = pieceOf(segment);
        piece.end = std::min(piece.end, length);
        if (piece.length() <= 0) continue;
        const bool follows = before != nullptr && goesOn(*before, segment);
        before = &segment;
        if (follows && piece.speed == pieces.back().speed) {
            // Many joints that are a little off must not add up.
            const bool keepsStep = piece.speed != 1 || isClose(offsetOf(segment) - offsetOf(*first));
            if (keepsStep) {
                pieces.back().end = piece.end;
                pieces.back().sourceLength += piece.sourceLength;
                continue;
            }
        }
        // Stretched sound begins exactly where it should, but may end some milliseconds off.
        if (follows && pieces.back().speed == 1 && piece.speed != 1) {
            piece.sourceStart = pieces.back().sourceStart + pieces.back().length();
            piece.fadesIn = pieces.back().fadesOut = false;
        }
        pieces.push_back(piece);
        first = &segment;
    }
    return pieces;
}

} // namespace morvelin
