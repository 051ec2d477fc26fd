// The named operation "write a movie": takes pictures with their times and sound, gives a file. Owned by a take or an
// export.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/base/Result.h"
#include "core/base/Time.h"
#include "platform/Picture.h"
#include "platform/Sound.h"

namespace morvelin {

/// Why a movie could not be started, continued or finished; `detail` is a whole sentence of the cause.
struct MovieWriterError {
    enum class Kind { NoEncoder, CannotCreateFile, EncodingFailed, WritingFailed };

    Kind kind = Kind::WritingFailed;
    std::string detail;
    int code = 0; ///< errno where the system gave one, e.g. ENOSPC

    [[nodiscard]] std::string description() const { return detail; }
};

/// How a track of sound is written: AAC, in `kSoundRate` and `kSoundChannels`.
struct SoundTrackSettings {
    std::int64_t bitRate = 128'000;
};

/// How a movie is written.
struct MovieSettings {
    enum class Container {
        /// QuickTime in fragments of at most 1 s: playable to its last second whenever the process is killed.
        FragmentedQuickTime,
        /// MPEG-4 with its index in front, whole only once finished.
        FastStartMPEG4
    };
    enum class Pace {
        RealTime, ///< low latency, cheap: a take; frames come at any times
        Offline   ///< an export: time for better coding; each frame follows on the one before
    };
    enum class Transfer { BT709, SRGB };

    std::filesystem::path path;
    Container container = Container::FastStartMPEG4;
    Pace pace = Pace::Offline;
    Transfer transfer = Transfer::BT709;
    PixelSize size;
    double frameRate = 60; ///< expected (real time) or exact (offline)
    std::int64_t bitRate = 0;
    Seconds keyFrameInterval{2};
    std::vector<SoundTrackSettings> soundTracks = {}; ///< in the order in which players list them
};

/// Writes H.264 video (BT.709 primaries and matrix, limited range, 4:2:0) and AAC sound.
/// One thread at a time; not tied to one.
class MovieWriter {
public:
    virtual ~MovieWriter() = default;

    /// Adds a frame; `time` counts from the movie's start and grows from frame to frame. `changed` lists the boxes in
    /// which the picture differs from the frame before; everything else is taken as equal. An empty list says that
    /// nothing differs. The picture may be reused once the call is back.
    virtual Result<void, MovieWriterError> append(const Picture& picture, Seconds time,
                                                  std::span<const PixelBox> changed) = 0;
    /// Adds interleaved samples to a track. Its samples follow one another from the movie's time 0 without a hole:
    /// whoever has a hole fills it with silence. Pictures and sound may come in any order, best at about the same time.
    virtual Result<void, MovieWriterError> appendSound(std::size_t track, std::span<const float> samples) = 0;
    /// Real time only: everything appended so far goes to the file now, so that a kill loses nothing of it but the
    /// last 50 ms of sound, which are still being encoded.
    virtual Result<void, MovieWriterError> flush() = 0;
    /// Completes the file: the last frame ends at `end`, and so does sound that went on longer. The file's data is on
    /// disk when it returns.
    virtual Result<void, MovieWriterError> finish(Seconds end) = 0;

    /// Bytes written so far, about.
    [[nodiscard]] virtual std::int64_t bytesWritten() const = 0;
};

/// Makes movie writers; the program's composition chooses the back-end.
class MovieWriterFactory {
public:
    virtual ~MovieWriterFactory() = default;
    virtual Result<std::unique_ptr<MovieWriter>, MovieWriterError> create(const MovieSettings& settings) = 0;
};

} // namespace morvelin
