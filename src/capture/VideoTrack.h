// The picture side of a take: turns screen frames into the movie's frames. Lives on the capture thread.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "capture/PauseTimeline.h"
#include "media/ScreenScaler.h"
#include "core/base/Log.h"
#include "platform/MovieWriter.h"
#include "platform/Screen.h"

namespace morvelin {

/// Keeps the movie's picture in the encoder's planes and converts only what changed. A screen that stands still costs
/// nothing; `kFlushDelay` after it fell still, all that was appended is in the file.
class VideoTrack {
public:
    static constexpr Seconds kFlushDelay{0.75};

    /// Takes frames of `screenSize` for a movie of `movieSize`.
    VideoTrack(std::unique_ptr<MovieWriter> writer, PixelSize screenSize, PixelSize movieSize, Log log);

    /// Takes over a frame and appends it, at its time without the pauses.
    Result<void, MovieWriterError> take(const ScreenFrame& frame, const PauseTimeline& pauses);
    /// What is due while the screen stands still.
    Result<void, MovieWriterError> idle(HostTime now, const PauseTimeline& pauses);
    /// Sound has been appended to the movie, which is due in the file `kFlushDelay` later even if no frame comes.
    void soundAppended(HostTime now) {
        if (!m_unflushedSince) m_unflushedSince = now;
    }
    /// Everything appended goes to the file now.
    Result<void, MovieWriterError> flush(HostTime now, const PauseTimeline& pauses);
    /// How long the screen may stand still before `idle` has something to do.
    [[nodiscard]] Seconds patience(HostTime now) const;

    /// Completes the movie; its last frame shows until `end`.
    Result<void, MovieWriterError> finish(HostTime adjustedEnd);

    [[nodiscard]] MovieWriter& writer() { return *m_writer; }
    /// When the movie's first frame was seen on the screen.
    [[nodiscard]] std::optional<HostTime> firstVideoPTS() const { return m_firstVideoPTS; }
    /// The movie's time 0 and its last frame, on the time line without pauses.
    [[nodiscard]] std::optional<HostTime> sessionStartTime() const { return m_sessionStartTime; }
    [[nodiscard]] std::optional<HostTime> lastAppendedPTS() const { return m_lastAppendedPTS; }
    [[nodiscard]] std::int64_t appendedFrames() const { return m_appendedFrames; }

private:
    void convert(const ScreenFrame& frame);
    Result<void, MovieWriterError> append(HostTime time, const PauseTimeline& pauses);
    Result<void, MovieWriterError> write(HostTime adjusted);
    void startSession(HostTime pts, HostTime adjusted);

    std::unique_ptr<MovieWriter> m_writer;
    Log m_log;
    std::optional<ScreenScaler> m_scaler; ///< for a screen that is larger than a movie may be
    Picture m_picture;
    std::vector<PixelBox> m_unwritten; ///< where the picture differs from the movie's last frame

    std::optional<HostTime> m_firstVideoPTS;
    std::optional<HostTime> m_sessionStartTime;
    std::optional<HostTime> m_lastAppendedPTS;
    std::optional<HostTime> m_unflushedSince; ///< when the last came that may not be in the file yet
    std::int64_t m_appendedFrames = 0;
};

} // namespace morvelin
