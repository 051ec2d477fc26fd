// Puts coded frames into a movie file: QuickTime in fragments for a take, MPEG-4 with its index in front for an export.
// Owned by one movie writer, or by the end of an export whose parts were encoded on their own.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

#include "core/base/Result.h"
#include "media/FFmpegHandles.h"
#include "media/OutputFile.h"
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

/// Writes one movie of one H.264 track.
///
/// In fragments, what `write` was given reaches the file when a key frame or 1 s has come after it, or on
/// `flushFragment`; at a movie's beginning sooner, when as much has come as lies in the file. When a write fails, the
/// file is cut back to its last whole fragment and stays playable; all later operations give the same error.
class FFmpegMuxer {
public:
    static Result<std::unique_ptr<FFmpegMuxer>, MovieWriterError> create(const std::filesystem::path& path,
                                                                         MovieSettings::Container container,
                                                                         const VideoTrackFormat& format);

    FFmpegMuxer(const FFmpegMuxer&) = delete;
    FFmpegMuxer& operator=(const FFmpegMuxer&) = delete;
    ~FFmpegMuxer();

    /// Frames in decoding order.
    Result<void, MovieWriterError> write(const EncodedPacket& packet);
    /// Fragments only: what was written so far goes to the file now. How long the last frame lasts is set right later.
    Result<void, MovieWriterError> flushFragment();
    /// Completes the file and waits until it is on disk; the last frame lasts until `end`, in ticks.
    Result<void, MovieWriterError> finish(std::int64_t end);

    [[nodiscard]] std::int64_t bytesWritten() const { return m_file.size(); }

private:
    /// The frame that has been written to the file last, whose duration was a guess.
    struct GuessedDuration {
        std::int64_t frameTime = 0;
        std::int64_t fileOffset = 0;
    };

    FFmpegMuxer(OutputFile file, MovieSettings::Container container, const VideoTrackFormat& format);
    static int writeCallback(void* self, std::uint8_t* bytes, int count);
    static std::int64_t seekCallback(void* self, std::int64_t offset, int whence);

    int openContainer(const VideoTrackFormat& format);
    int writeHeader();
    [[nodiscard]] bool holdsEnough(std::int64_t end) const;
    int writeHeldPacket(std::int64_t duration);
    int endFragment();
    int correctGuess(std::int64_t nextFrameTime);
    int noteGuess(std::int64_t frameTime, std::int64_t fragmentStart);
    int completeFragments(std::int64_t end);
    [[nodiscard]] bool isFragmented() const { return m_container == MovieSettings::Container::FragmentedQuickTime; }
    Result<void, MovieWriterError> check(int code);

    OutputFile m_file;
    MovieSettings::Container m_container;
    Rational m_timeBase;
    std::int64_t m_frameTicks = 1; ///< length of a frame at the expected rate
    IOHandle m_io;
    OutputHandle m_output;
    AVStream* m_track = nullptr;
    PacketHandle m_held; ///< a frame's duration is known when the next one comes
    bool m_isHolding = false;
    std::int64_t m_position = 0;      ///< of the next byte that the container writes
    std::int64_t m_committedSize = 0; ///< of the file up to its last whole fragment
    std::optional<std::int64_t> m_fragmentStart;
    std::int64_t m_fragmentBytes = 0;
    std::int64_t m_firstDuration = 0; ///< of the open fragment's first frame
    std::optional<GuessedDuration> m_guess;
    int m_systemError = 0;
    std::optional<MovieWriterError> m_error;
};

} // namespace morvelin
