#include "capture/TakeCamera.h"

#include <algorithm>

#include "core/CameraPlacement.h"

namespace morvelin {

namespace {

/// Of the frame's width.
constexpr double kBubbleWidth = 0.16;
constexpr double kLargestBubbleHeight = 0.4;
constexpr double kCornerRadius = 0.1;

} // namespace

CameraSettings newCameraSettings(PixelSize screen, Seconds startOffset) {
    const double aspectRatio = static_cast<double>(screen.width) / screen.height;
    const double width = std::min(kBubbleWidth, kLargestBubbleHeight / aspectRatio);
    return {.rect = parked(CameraAnchor::BottomRight, aspectRatio, width),
            .cornerRadius = kCornerRadius,
            .isMirrored = true,
            .startOffset = startOffset};
}

TakeCamera::TakeCamera(EventLoop& loop, CameraSession::Services services, Tell tell)
    : m_engine(loop, services),
      m_log(services.log),
      m_tell(std::move(tell)) {
    m_engine.onLost = [this](const CameraCaptureError& error) {
        m_log("[CameraCaptureEngine] Camera lost: " + error.description());
        m_tell("The camera has stopped, and the take goes on without it. " + error.description());
    };
    m_engine.onBegan = [this](HostTime firstSample) {
        if (onBegan) onBegan(firstSample);
    };
}

Task<void> TakeCamera::start(std::string deviceID, std::filesystem::path movie) {
    auto started = co_await m_engine.startSession(std::move(deviceID));
    if (started) started = m_engine.startRecording(std::move(movie));
    if (started) co_return;
    m_log("[Morvelin] Camera recording failed to start: " + started.error().description());
    m_tell("The take goes on without a camera. " + started.error().description());
}

Task<std::optional<FinishedCamera>> TakeCamera::stop(HostTime now, HostTime screenStart, PixelSize screen) {
    const auto recording = co_await m_engine.stopRecording(now);
    co_await m_engine.stopSession();
    if (!recording) co_return std::nullopt;
    co_return FinishedCamera{recording->url, newCameraSettings(screen, recording->firstSamplePTS - screenStart)};
}

} // namespace morvelin
