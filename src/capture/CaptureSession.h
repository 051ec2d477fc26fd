// One running capture: screen stream, picture and movie on a thread of their own. Owned by a `CaptureEngine`.
#pragma once

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "capture/CaptureError.h"
#include "capture/CaptureGeometry.h"
#include "capture/PauseTimeline.h"
#include "capture/VideoTrack.h"
#include "core/base/Date.h"
#include "core/base/Log.h"
#include "platform/MovieWriter.h"
#include "platform/Screen.h"

namespace morvelin {

/// A movie that a capture made.
struct CapturedRecording {
    std::filesystem::path url;
    Seconds duration;
};

class CaptureSession {
public:
    struct Services {
        ScreenSource& screen;
        MovieWriterFactory& writers;
        const WallClock& clock;
        Log log;
    };
    /// Called on the capture thread when the capture ends before it was told to.
    using Interrupted = std::function<void(const CaptureError&)>;

    /// Opens stream and movie and returns when the first frame is in. Takes some tens of milliseconds; any thread.
    static Result<std::unique_ptr<CaptureSession>, CaptureError> start(const Services& services,
                                                                       const CaptureGeometry& geometry,
                                                                       std::filesystem::path movie,
                                                                       Interrupted interrupted);
    /// Ends the capture now if it runs; the movie is completed.
    ~CaptureSession();
    CaptureSession(const CaptureSession&) = delete;
    CaptureSession& operator=(const CaptureSession&) = delete;

    /// When the movie's first frame was seen on the screen.
    [[nodiscard]] HostTime firstFrameTime() const { return m_firstFrameTime; }

    void pause(HostTime now);
    void resume(HostTime now);
    void stop(HostTime now);
    /// Waits until the movie is complete, after `stop` or an interruption.
    Result<CapturedRecording, CaptureError> result();

private:
    enum class Order { Pause, Resume, Stop };
    struct Command {
        Order order = Order::Stop;
        HostTime time;
    };

    CaptureSession(Services services, std::filesystem::path movie, Interrupted interrupted);

    Result<void, CaptureError> open(const CaptureGeometry& geometry);
    void send(Command command);

    void run();
    std::optional<CaptureError> captureFirstFrame();
    std::optional<CaptureError> captureNext();
    Result<bool, CaptureError> captureFrame(Seconds patience);
    void obeyCommands();
    void waitForCommand();
    Result<CapturedRecording, CaptureError> finish(HostTime end);

    Services m_services;
    std::filesystem::path m_movie;
    Interrupted m_interrupted;
    HostTime m_firstFrameTime;

    // The capture thread's.
    std::unique_ptr<ScreenStream> m_stream;
    std::optional<VideoTrack> m_video;
    PauseTimeline m_pauses;
    std::optional<HostTime> m_stopTime;

    std::mutex m_mutex; ///< guards `m_commands`
    std::condition_variable m_hasCommands;
    std::vector<Command> m_commands;

    std::promise<std::optional<CaptureError>> m_firstFrame;
    std::optional<Result<CapturedRecording, CaptureError>> m_result; ///< read once the thread has ended
    std::thread m_thread;
};

} // namespace morvelin
