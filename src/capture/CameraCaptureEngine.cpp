#include "capture/CameraCaptureEngine.h"

namespace morvelin {

CameraCaptureEngine::CameraCaptureEngine(EventLoop& loop, CameraSession::Services services)
    : m_loop(loop),
      m_services(std::move(services)),
      m_self(std::make_shared<CameraCaptureEngine*>(this)) {}

CameraCaptureEngine::~CameraCaptureEngine() { *m_self = nullptr; }

Task<Result<void, CameraCaptureError>> CameraCaptureEngine::startSession(std::string deviceID) {
    if (m_isRecording) co_return failure(CameraCaptureError{CameraCaptureError::Kind::AlreadyRecording, {}});
    co_await stopSession();
    const CameraSession::Listener listener{.lost =
                                               [&loop = m_loop, self = m_self](const CameraError& error) {
                                                   loop.post([self, error] {
                                                       if (*self != nullptr && (*self)->onLost)
                                                           (*self)->onLost(CameraCaptureError::of(error));
                                                   });
                                               },
                                           .began =
                                               [&loop = m_loop, self = m_self](HostTime firstSample) {
                                                   loop.post([self, firstSample] {
                                                       if (*self != nullptr && (*self)->onBegan)
                                                           (*self)->onBegan(firstSample);
                                                   });
                                               }};
    auto session = co_await onWorker(m_loop, [&] { return CameraSession::open(m_services, deviceID, listener); });
    if (!session) co_return failure(CameraCaptureError::of(session.error()));
    m_session = std::move(*session);
    co_return Result<void, CameraCaptureError>();
}

Result<void, CameraCaptureError> CameraCaptureEngine::startRecording(std::filesystem::path url) {
    if (m_isRecording) return failure(CameraCaptureError{CameraCaptureError::Kind::AlreadyRecording, {}});
    if (!isRunning()) return failure(CameraCaptureError{CameraCaptureError::Kind::NotRunning, {}});
    m_session->record(url);
    m_outputURL = std::move(url);
    m_isRecording = true;
    m_isPaused = false;
    return {};
}

void CameraCaptureEngine::pause(HostTime now) {
    if (!m_isRecording || std::exchange(m_isPaused, true)) return;
    m_session->pause(now);
}

void CameraCaptureEngine::resume(HostTime now) {
    if (!m_isRecording || !std::exchange(m_isPaused, false)) return;
    m_session->resume(now);
}

Task<std::optional<CameraRecording>> CameraCaptureEngine::stopRecording(HostTime now) {
    if (!std::exchange(m_isRecording, false)) co_return std::nullopt;
    m_outputURL.reset();
    auto finished = m_session->finish(now);
    auto recording = co_await onWorker(m_loop, [&] { return finished.get(); });
    co_return recording;
}

Task<void> CameraCaptureEngine::stopSession() {
    if (m_session == nullptr) co_return;
    m_isRecording = false;
    auto session = std::move(m_session);
    (void)co_await onWorker(m_loop, [&] {
        session.reset();
        return true;
    });
}

} // namespace morvelin
