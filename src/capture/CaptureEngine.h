// Records the screen to a movie: start, pause, resume, stop. Owned by a take; all on the main thread.
#pragma once

#include "capture/CaptureSession.h"
#include "core/base/EventLoop.h"

namespace morvelin {

/// A capture that runs: when the movie's first frame was seen, and what it shows.
struct CaptureStart {
    HostTime firstFrameTime;
    CaptureGeometry geometry;
};

/// Must outlive its operations. The pointer is not in the picture: `CursorTracker` keeps it apart.
class CaptureEngine {
public:
    CaptureEngine(EventLoop& loop, CaptureSession::Services services);
    ~CaptureEngine();

    /// Called when the capture ends by itself, in mid-take. The movie is complete by then; `stopCapture` gives it.
    std::function<void(const CaptureError&)> onStreamStopped;

    /// Called with whole sentences for the user while the take goes on, such as that a microphone is lost.
    std::function<void(const std::string&)> onNotice;

    [[nodiscard]] bool isRecording() const { return m_state == State::Recording || m_state == State::Paused; }
    [[nodiscard]] bool isPaused() const { return m_state == State::Paused; }
    /// Nothing while no capture runs.
    [[nodiscard]] std::optional<CaptureProgress> progress() const;

    /// Comes back once the first frame is recorded. The movie's folder is made where it is missing.
    Task<Result<CaptureStart, CaptureError>> startCapture(CaptureTarget target, std::filesystem::path outputURL,
                                                          SoundChoice sound = {});
    /// The movie has neither a hole nor a frozen frame where the pause was: what follows slides back.
    void pause(HostTime now);
    void resume(HostTime now);
    /// Completes the movie, which ends at `now`, or where the capture ended by itself.
    Task<Result<CapturedRecording, CaptureError>> stopCapture(HostTime now);

private:
    enum class State { Idle, Starting, Recording, Paused, Finishing };

    Result<CaptureGeometry, CaptureError> prepare(const CaptureTarget& target, const std::filesystem::path& outputURL);
    CaptureSession::Listener sessionListener();
    void sessionInterrupted(const CaptureError& error);

    EventLoop& m_loop;
    CaptureSession::Services m_services;
    State m_state = State::Idle;
    std::unique_ptr<CaptureSession> m_session;
    std::shared_ptr<CaptureEngine*> m_self; ///< lets what the capture thread posts find out that the engine is gone
};

} // namespace morvelin
