// Puts coded frames and sound into a movie file: QuickTime in fragments for a take, MPEG-4 with its index in front for an
// export. Owned by one movie writer, or by the end of an export whose parts were encoded on their own.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "core/base/Result.h"
#include "media/AACEncoder.h"
#include "media/FFmpegHandles.h"
#include "media/OutputFile.h"
#include "media/SoundQueue.h"
#include "media/VideoEncoder.h"
#include "platform/MovieWriter.h"

struct AVStream;

namespace morvelin {

/// What a movie's video track holds.
struct VideoTrackFormat {
    PixelSize size;
    Rational timeBase;
    double frameRate = 60;
    MovieSettings::Transfer transfer = MovieSettings::Transfer::BT709;
    std::span<const std::uint8_t> parameterSets;
};

/// What a movie's track of sound holds: AAC, with these numbers of its encoder.
struct SoundTrackFormat {
    std::span<const std::uint8_t> configuration;
    std::int64_t bitRate = 0;
    int packetLength = 0;
    int priming = 0;
};

/// Writes one movie of one H.264 track, and of any number of tracks of sound.
///
/// In fragments, what `write` was given reaches the file when a key frame or 0.8 s have come after it, or on
/// `flushFragment`; at a movie's beginning sooner, when as much has come as lies in the file. Sound goes with it, or by
/// itself once 0.8 s have come without a picture. When a write fails, the file is cut back to its last whole fragment and
/// stays playable; all later operations give the same error.
///
/// With the index in front, sound follows half a second behind its picture, however early it is given.
class FFmpegMuxer {
public:
    static Result<std::unique_ptr<FFmpegMuxer>, MovieWriterError> create(const std::filesystem::path& path,
                                                                         MovieSettings::Container container,
                                                                         const VideoTrackFormat& picture,
                                                                         std::span<const SoundTrackFormat> sound = {});

    FFmpegMuxer(const FFmpegMuxer&) = delete;
    FFmpegMuxer& operator=(const FFmpegMuxer&) = delete;
    ~FFmpegMuxer();

    /// Frames in decoding order.
    Result<void, MovieWriterError> write(const EncodedPacket& packet);
    /// A track's packets in their order.
    Result<void, MovieWriterError> writeSound(std::size_t track, const EncodedSound& packet);
    /// Fragments only: what was written so far goes to the file now. How long the last frame lasts is set right later.
    Result<void, MovieWriterError> flushFragment();
    /// Completes the file and waits until it is on disk; the last frame lasts until `end`, in ticks of the picture, and
    /// sound is cut there.
    Result<void, MovieWriterError> finish(std::int64_t end);

    [[nodiscard]] std::int64_t bytesWritten() const { return m_file.size(); }

private:
    /// The frame that has been written to the file last, whose duration was a guess.
    struct GuessedDuration {
        std::int64_t frameTime = 0;
        std::int64_t duration = 0;
        std::int64_t fileOffset = 0;
    };

    FFmpegMuxer(OutputFile file, MovieSettings::Container container, const VideoTrackFormat& picture);
    static int writeCallback(void* self, std::uint8_t* bytes, int count);
    static std::int64_t seekCallback(void* self, std::int64_t offset, int whence);

    int openContainer(const VideoTrackFormat& picture, std::span<const SoundTrackFormat> sound);
    int writeHeader(std::span<const SoundTrackFormat> sound);
    int writePriming(std::span<const SoundTrackFormat> sound);
    [[nodiscard]] Seconds secondsOf(std::int64_t ticks) const;
    [[nodiscard]] std::int64_t ticksOf(Seconds time) const;
    [[nodiscard]] bool holdsEnough() const;
    [[nodiscard]] bool hasWaitingSound() const;
    int writeHeldPacket(std::int64_t duration);
    int writeWaitingSound(Seconds time);
    int commitFragment();
    int endFragment();
    int guessDuration(GuessedDuration guess, std::int64_t fragmentOffset);
    int setGuess(std::int64_t duration);
    int correctGuess(std::int64_t nextFrameTime);
    int completeFragments(std::int64_t end);
    int cutCommittedSound(Seconds end);
    [[nodiscard]] bool isFragmented() const { return m_container == MovieSettings::Container::FragmentedQuickTime; }
    Result<void, MovieWriterError> check(int code);

    OutputFile m_file;
    MovieSettings::Container m_container;
    Rational m_timeBase;
    std::int64_t m_frameTicks = 1; ///< length of a frame at the expected rate
    IOHandle m_io;
    OutputHandle m_output;
    AVStream* m_track = nullptr;
    std::vector<SoundQueue> m_sound;
    PacketHandle m_held; ///< a frame's duration is known when the next one comes
    bool m_isHolding = false;
    std::int64_t m_position = 0;                 ///< of the next byte that the container writes
    std::int64_t m_committedSize = 0;            ///< of the file up to its last whole fragment
    std::vector<std::int64_t> m_fragments;       ///< where each begins in the file
    std::optional<std::int64_t> m_fragmentStart; ///< of the open fragment's pictures
    std::int64_t m_fragmentEnd = 0;              ///< of those pictures that the container has
    std::int64_t m_fragmentBytes = 0;            ///< of its pictures
    std::int64_t m_firstDuration = 0;            ///< of its first picture
    std::optional<GuessedDuration> m_guess;
    int m_systemError = 0;
    std::optional<MovieWriterError> m_error;
};

} // namespace morvelin
