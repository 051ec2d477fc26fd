// The camera of a take: starts, pauses and ends with it, and never stops it. Owned by the take; all on the main thread.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "capture/CameraCaptureEngine.h"
#include "core/Style.h"

namespace morvelin {

/// A camera's movie, and how its bubble lies in the new project.
struct FinishedCamera {
    std::filesystem::path movie;
    CameraSettings settings;
};

/// The bubble of a new take without a preview on the screen: a square at the bottom right, mirrored.
[[nodiscard]] CameraSettings newCameraSettings(PixelSize screen, Seconds startOffset);

class TakeCamera {
public:
    using Tell = std::function<void(const std::string& sentence)>;

    TakeCamera(EventLoop& loop, CameraSession::Services services, Tell tell);

    /// Called when the movie has its first frame, with the moment at which that was seen.
    std::function<void(HostTime)> onBegan;

    /// Opens the camera and begins its movie: before the screen's, so that it has a picture when that begins. Where that
    /// fails the log and the user are told.
    Task<void> start(std::string deviceID, std::filesystem::path movie);
    void pause(HostTime now) { m_engine.pause(now); }
    void resume(HostTime now) { m_engine.resume(now); }
    /// Nothing where the camera gave no picture. `screenStart` is the time of the screen's first frame.
    Task<std::optional<FinishedCamera>> stop(HostTime now, HostTime screenStart, PixelSize screen);

private:
    CameraCaptureEngine m_engine;
    Log m_log;
    Tell m_tell;
};

} // namespace morvelin
