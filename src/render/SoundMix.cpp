#include "render/SoundMix.h"

#include <algorithm>
#include <utility>

namespace morvelin {

std::optional<SourceSound> SourceSound::open(const std::filesystem::path& file, SoundReaderFactory& readers) {
    SourceSound sound;
    while (true) {
        auto reader = readers.open(file, sound.m_tracks.size());
        if (!reader) break;
        sound.m_tracks.push_back(std::move(*reader));
    }
    if (sound.m_tracks.empty()) return std::nullopt;
    return sound;
}

SoundSpan SourceSound::span() const {
    SoundSpan span = m_tracks.front()->span();
    for (const auto& track : m_tracks) {
        span.start = std::min(span.start, track->span().start);
        span.end = std::max(span.end, track->span().end);
    }
    return span;
}

void SourceSound::read(std::int64_t first, std::span<float> samples) {
    m_tracks.front()->read(first, samples);
    for (std::size_t track = 1; track < m_tracks.size(); ++track) {
        m_track.resize(samples.size());
        m_tracks[track]->read(first, m_track);
        for (std::size_t i = 0; i < samples.size(); ++i) samples[i] += m_track[i];
    }
}

SoundMix::SoundMix(std::vector<Track> tracks, Seconds length) : m_length(soundSamples(length)) {
    for (Track& track : tracks)
        m_players.push_back(std::make_unique<Player>(std::move(track.source), soundPieces(track.segments, m_length)));
}

void SoundMix::read(std::span<float> samples) {
    std::ranges::fill(samples, 0.0F);
    for (const auto& player : m_players) play(*player, samples);
    for (float& sample : samples) sample = std::clamp(sample, -1.0F, 1.0F);
    m_position += static_cast<std::int64_t>(samples.size()) / kSoundChannels;
}

/// Adds what a track plays from the mix's position on.
void SoundMix::play(Player& player, std::span<float> samples) {
    const std::int64_t end = m_position + static_cast<std::int64_t>(samples.size()) / kSoundChannels;
    while (player.next < player.pieces.size()) {
        const SoundPiece& piece = player.pieces[player.next];
        if (piece.start >= end) return;
        const std::int64_t from = std::max(piece.start, m_position);
        const std::int64_t to = std::min(piece.end, end);
        playPiece(player, from - piece.start,
                  samples.subspan(static_cast<std::size_t>((from - m_position) * kSoundChannels),
                                  static_cast<std::size_t>((to - from) * kSoundChannels)));
        if (piece.end > end) return;
        player.stretch.reset();
        ++player.next;
    }
}

/// Adds the current piece's sound from its sample `from` on.
void SoundMix::playPiece(Player& player, std::int64_t from, std::span<float> samples) {
    const SoundPiece& piece = player.pieces[player.next];
    m_piece.resize(samples.size());
    if (piece.speed == 1) {
        player.source.read(piece.sourceStart + from, m_piece);
    } else {
        if (!player.stretch)
            player.stretch.emplace(
                [&source = player.source, start = piece.sourceStart](std::int64_t first, std::span<float> wanted) {
                    source.read(start + first, wanted);
                },
                piece.sourceLength, piece.speed);
        player.stretch->read(m_piece);
    }
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] += m_piece[i] * piece.gain(from + static_cast<std::int64_t>(i) / kSoundChannels);
}

} // namespace morvelin
