// The movie of a take's camera. Lives on the camera's own thread.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "capture/PauseTimeline.h"
#include "core/base/Log.h"
#include "platform/Camera.h"
#include "platform/MovieWriter.h"

namespace morvelin {

/// A camera's movie, and where its beginning lies in the take.
struct CameraRecording {
    std::filesystem::path url;
    PixelSize recordedSize;
    HostTime firstSamplePTS; ///< when its first frame was seen, on the take's line without pauses
};

/// width × height × 30 × 0.07, at least 3 and at most 20 million bits a second.
[[nodiscard]] std::int64_t cameraBitRate(PixelSize size);

/// The writer is made with the first frame: its size is the one that the camera really gives. A movie that can't be
/// written costs only itself: the log says why, and no more is tried.
class CameraTrack {
public:
    CameraTrack(std::filesystem::path url, MovieWriterFactory& writers, Log log);

    void pause(HostTime now) { m_pauses.pause(now); }
    void resume(HostTime now);
    void take(const CameraFrame& frame);
    /// When the movie's first frame was seen, on the take's line without pauses.
    [[nodiscard]] std::optional<HostTime> sessionStartTime() const { return m_sessionStartTime; }
    /// Completes the movie; its last frame shows until `end`. Nothing where no frame was appended.
    std::optional<CameraRecording> finish(HostTime end);

private:
    bool setUpWriter(PixelSize size);
    void fail(const std::string& line);

    std::filesystem::path m_url;
    MovieWriterFactory& m_writers;
    Log m_log;
    std::unique_ptr<MovieWriter> m_writer;
    bool m_hasFailed = false;
    PauseTimeline m_pauses;
    HostTime m_lastResume;
    PixelSize m_recordedSize;
    std::optional<HostTime> m_sessionStartTime;
    std::optional<HostTime> m_lastAppendedPTS;
};

} // namespace morvelin
