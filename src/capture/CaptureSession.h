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
#include "capture/FrameRateControl.h"
#include "capture/LostFrames.h"
#include "capture/PauseTimeline.h"
#include "capture/SoundRecorder.h"
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
    double lowestFrameRate = FrameRateControl::kRates.front(); ///< that the machine could keep all the time
};

/// How far a running capture is. It stands still when the capture does.
struct CaptureProgress {
    HostTime lastTurn; ///< when the capture thread last looked for something to do; it does so twice a second and more
    Seconds recorded;  ///< without pauses
    std::int64_t frames = 0;
    std::int64_t lostFrames = 0; ///< that the screen had while the machine was busy
};

class CaptureSession {
public:
    struct Services {
        ScreenSource& screen;
        AudioInputSource& audioInput;
        MovieWriterFactory& writers;
        const WallClock& clock;
        Log log;
    };
    /// Called on the capture thread.
    struct Listener {
        /// The capture has ended before it was told to.
        std::function<void(const CaptureError&)> interrupted;
        /// Something a user should know while the take goes on, in whole sentences.
        std::function<void(const std::string&)> noticed;
    };

    /// Opens stream and movie and returns when the first frame is in. Takes some tens of milliseconds; any thread.
    static Result<std::unique_ptr<CaptureSession>, CaptureError> start(const Services& services,
                                                                       const CaptureGeometry& geometry,
                                                                       const SoundChoice& sound,
                                                                       std::filesystem::path movie, Listener listener);
    /// Ends the capture now if it runs; the movie is completed.
    ~CaptureSession();
    CaptureSession(const CaptureSession&) = delete;
    CaptureSession& operator=(const CaptureSession&) = delete;

    /// When the movie's first frame was seen on the screen.
    [[nodiscard]] HostTime firstFrameTime() const { return m_firstFrameTime; }

    void pause(HostTime now);
    void resume(HostTime now);
    void stop(HostTime now);
    /// Waits until the movie is complete, after `stop` or an interruption. A screen that doesn't answer is cut off.
    Result<CapturedRecording, CaptureError> result();
    [[nodiscard]] CaptureProgress progress() const;

private:
    enum class Order { Pause, Resume, Stop };
    struct Command {
        Order order = Order::Stop;
        HostTime time;
    };

    CaptureSession(Services services, std::filesystem::path movie, Listener listener);

    Result<void, CaptureError> open(const CaptureGeometry& geometry, const SoundChoice& sound);
    void send(Command command);

    void run();
    std::optional<CaptureError> captureFirstFrame();
    std::optional<CaptureError> captureNext();
    Result<bool, CaptureError> captureFrame(Seconds patience);
    std::optional<CaptureError> writeSound();
    void noteTurn();
    void obeyCommands();
    void waitForCommand();
    Result<CapturedRecording, CaptureError> finish(HostTime end);

    Services m_services;
    std::filesystem::path m_movie;
    Listener m_listener;
    HostTime m_firstFrameTime;

    // The capture thread's.
    std::unique_ptr<ScreenStream> m_stream;
    std::optional<VideoTrack> m_video;
    std::unique_ptr<SoundRecorder> m_sound;
    HostTime m_soundWrittenAt;
    PauseTimeline m_pauses;
    std::optional<HostTime> m_stopTime;
    FrameRateControl m_frameRate;
    LostFrames m_lostFrames;

    mutable std::mutex m_progressMutex; ///< guards `m_progress`
    CaptureProgress m_progress;

    std::mutex m_mutex; ///< guards `m_commands`
    std::condition_variable m_hasCommands;
    std::vector<Command> m_commands;

    std::promise<std::optional<CaptureError>> m_firstFrame;
    std::promise<void> m_end; ///< of the thread's work
    std::future<void> m_hasEnded = m_end.get_future();
    std::optional<Result<CapturedRecording, CaptureError>> m_result; ///< read once the thread has ended
    std::thread m_thread;
};

} // namespace morvelin
