// A film's sound: its edit's tracks, mixed from the files they come from. Owned by one export or one preview.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "media/TimeStretch.h"
#include "platform/SoundReader.h"
#include "render/SoundPieces.h"

namespace morvelin {

/// A file's tracks of sound, heard together.
class SourceSound {
public:
    /// Nothing where the file has no sound that can be read.
    [[nodiscard]] static std::optional<SourceSound> open(const std::filesystem::path& file,
                                                         SoundReaderFactory& readers);

    /// From the first track's beginning to the last one's end.
    [[nodiscard]] SoundSpan span() const;
    /// As `SoundReader::read`.
    void read(std::int64_t first, std::span<float> samples);

private:
    std::vector<std::unique_ptr<SoundReader>> m_tracks;
    std::vector<float> m_track;
};

/// Gives the samples one after the other, in memory that does not grow with the film. One thread at a time.
class SoundMix {
public:
    struct Track {
        SourceSound source;
        std::vector<AudioTrack::Segment> segments;
    };

    /// The mix begins with the film and lasts `length`.
    SoundMix(std::vector<Track> tracks, Seconds length);

    /// In samples.
    [[nodiscard]] std::int64_t length() const { return m_length; }
    [[nodiscard]] std::int64_t position() const { return m_position; }
    /// The next samples, interleaved; silence after the film's end. Sums beyond full scale are limited to it.
    void read(std::span<float> samples);

private:
    /// A track while it plays.
    struct Player {
        SourceSound source;
        std::vector<SoundPiece> pieces;
        std::size_t next = 0;                 ///< the piece that plays, or comes next
        std::optional<TimeStretch> stretch{}; ///< of the piece that plays, where its speed isn't 1
    };

    void play(Player& player, std::span<float> samples);
    void playPiece(Player& player, std::int64_t from, std::span<float> samples);

    std::vector<std::unique_ptr<Player>> m_players; ///< their addresses are known to their stretches
    std::int64_t m_length = 0;
    std::int64_t m_position = 0;
    std::vector<float> m_piece;
};

} // namespace morvelin
