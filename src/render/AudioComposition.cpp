#include "render/AudioComposition.h"

#include <algorithm>
#include <cmath>

#include "timeline/Tolerance.h"

namespace morvelin::FragmentCompositionBuilder {

namespace {

using Piece = AudioLayout::Piece;

/// Pieces that are no further apart than this were meant to touch.
constexpr Seconds kAbutment = 0.004_s;

bool hasFiniteNumbers(const Piece& piece) {
    return std::isfinite(piece.timelineStart.value) && std::isfinite(piece.timelineEnd.value) &&
           std::isfinite(piece.sourceStart.value) && std::isfinite(piece.speed);
}

std::vector<Piece> piecesOf(const EditComposition& picture) {
    std::vector<Piece> pieces;
    for (const EditComposition::Segment& segment : picture.segments())
        pieces.push_back({std::nullopt, segment.start, segment.end, segment.sourceStart, segment.speed});
    return pieces;
}

/// Nothing for a recording that is not heard.
struct PiecesOfRecording {
    const EditComposition& picture;

    std::vector<Piece> operator()(const AudioMix::Clipped& recording) const { return recording.pieces; }
    std::vector<Piece> operator()(const AudioMix::LaidOut&) const { return piecesOf(picture); }
    std::vector<Piece> operator()(const AudioMix::Muted&) const { return {}; }
};

} // namespace

AudioMix audioMix(std::span<const AudioStack::Layer> layers, std::span<const VideoFragment> fragments) {
    AudioStack::Mix heard = AudioStack::mix(layers);
    AudioMix mix{AudioMix::Muted{}, std::move(heard.takes)};
    if (!heard.recording) return mix;
    const bool isAloneAndWhole = layers.size() == 1 && !AudioLayout::hasFragmentAudio(fragments);
    if (isAloneAndWhole)
        mix.recording = AudioMix::LaidOut{};
    else
        mix.recording = AudioMix::Clipped{std::move(*heard.recording)};
    return mix;
}

std::vector<AudioTrack::Segment> layOut(std::span<const Piece> pieces, SoundSpan sound) {
    std::vector<AudioTrack::Segment> segments;
    EditTime trackEnd;
    for (const Piece& piece : pieces) {
        if (!hasFiniteNumbers(piece) || piece.speed <= 0) continue;
        const SourceTime from = std::max(piece.sourceStart, sound.start);
        const SourceTime to = std::min(piece.sourceEnd(), sound.end);
        if (to - from <= kShortestPiece + Seconds(kTolerance)) continue;

        const EditTime wanted = piece.timelineStart + (from - piece.sourceStart) / piece.speed;
        const EditTime start = atMost(wanted - trackEnd, kAbutment) ? trackEnd : wanted;
        const double speed = playedSpeed(piece.speed);
        trackEnd = start + (to - from) / speed;
        segments.push_back({start, trackEnd, from, to, speed});
    }
    return segments;
}

std::vector<AudioTrack> buildAudio(const AudioMix& mix, const EditComposition& picture,
                                   const std::filesystem::path& recording, const AudioSpanOf& spanOf) {
    std::vector<AudioTrack> tracks;
    const auto add = [&](const std::filesystem::path& file, std::span<const Piece> pieces) {
        if (pieces.empty()) return;
        const auto sound = spanOf(file);
        if (!sound) return;
        auto segments = layOut(pieces, *sound);
        if (!segments.empty()) tracks.push_back({file, std::move(segments)});
    };
    add(recording, std::visit(PiecesOfRecording{picture}, mix.recording));
    for (const AudioMix::Take& take : mix.takes) add(take.url, take.pieces);
    return tracks;
}

} // namespace morvelin::FragmentCompositionBuilder
