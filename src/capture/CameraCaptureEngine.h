// Records a camera to a movie of its own, beside a take of the screen. Owned by the take; all on the main thread.
#pragma once

#include "capture/CameraCaptureError.h"
#include "capture/CameraSession.h"
#include "core/base/EventLoop.h"

namespace morvelin {

/// Must outlive its operations. The session may run without a recording, for a picture of the camera before a take.
class CameraCaptureEngine {
public:
    CameraCaptureEngine(EventLoop& loop, CameraSession::Services services);
    ~CameraCaptureEngine();

    /// Called when the camera goes away. What was recorded is kept, and `stopRecording` gives it.
    std::function<void(const CameraCaptureError&)> onLost;
    /// Called when the movie has its first frame, with the moment at which that was seen.
    std::function<void(HostTime)> onBegan;

    [[nodiscard]] bool isRunning() const { return m_session != nullptr; }
    [[nodiscard]] bool isRecording() const { return m_isRecording; }
    [[nodiscard]] bool isPaused() const { return m_isPaused; }
    [[nodiscard]] const std::optional<std::filesystem::path>& outputURL() const { return m_outputURL; }

    /// Starts the camera; another one that runs is stopped first. An empty id is the first camera's.
    Task<Result<void, CameraCaptureError>> startSession(std::string deviceID);
    Result<void, CameraCaptureError> startRecording(std::filesystem::path url);
    /// The same moments as those of the screen's pauses.
    void pause(HostTime now);
    void resume(HostTime now);
    /// Completes the movie. Nothing where none was recorded, or it has no picture.
    Task<std::optional<CameraRecording>> stopRecording(HostTime now);
    /// Lets the camera go. On a worker, as it may take a moment.
    Task<void> stopSession();

private:
    EventLoop& m_loop;
    CameraSession::Services m_services;
    std::unique_ptr<CameraSession> m_session;
    bool m_isRecording = false;
    bool m_isPaused = false;
    std::optional<std::filesystem::path> m_outputURL;
    std::shared_ptr<CameraCaptureEngine*> m_self; ///< lets what the camera's thread posts find out that this is gone
};

} // namespace morvelin
