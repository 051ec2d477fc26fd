#include "capture/CaptureEngine.h"

#include "core/base/Files.h"

namespace morvelin {

namespace {

/// The windows are only asked for where one of them is the target.
Result<CaptureChoices, ScreenError> readChoices(ScreenSource& screen, const CaptureTarget& target) {
    auto displays = screen.displays();
    if (!displays) return passOn(std::move(displays));
    CaptureChoices choices{std::move(*displays), {}};
    if (!std::holds_alternative<WindowTarget>(target)) return choices;
    auto windows = screen.windows();
    if (!windows) return passOn(std::move(windows));
    choices.windows = std::move(*windows);
    return choices;
}

} // namespace

CaptureEngine::CaptureEngine(EventLoop& loop, CaptureSession::Services services)
    : m_loop(loop),
      m_services(std::move(services)),
      m_self(std::make_shared<CaptureEngine*>(this)) {}

CaptureEngine::~CaptureEngine() { *m_self = nullptr; }

Task<Result<CaptureStart, CaptureError>> CaptureEngine::startCapture(CaptureTarget target,
                                                                     std::filesystem::path outputURL,
                                                                     SoundChoice sound) {
    if (m_state != State::Idle) co_return failure(CaptureError{CaptureError::Kind::AlreadyRecording, {}});
    auto geometry = prepare(target, outputURL);
    if (!geometry) co_return passOn(std::move(geometry));

    m_state = State::Starting;
    const CaptureSession::Listener listener = sessionListener();
    auto session = co_await onWorker(
        m_loop, [&] { return CaptureSession::start(m_services, *geometry, sound, outputURL, listener); });
    if (!session) {
        m_state = State::Idle;
        co_return passOn(std::move(session));
    }
    m_session = std::move(*session);
    m_state = State::Recording;
    co_return CaptureStart{m_session->firstFrameTime(), *geometry};
}

/// Finds what to capture and makes the movie's folder.
Result<CaptureGeometry, CaptureError> CaptureEngine::prepare(const CaptureTarget& target,
                                                             const std::filesystem::path& outputURL) {
    auto choices = readChoices(m_services.screen, target);
    if (!choices) return failure(CaptureError{CaptureError::Kind::ScreenUnavailable, choices.error().description()});
    auto geometry = resolveTarget(target, *choices);
    if (!geometry) return geometry;
    if (auto made = createFolder(outputURL.parent_path()); !made)
        return failure(CaptureError{CaptureError::Kind::OutputDirectoryCreationFailed, made.error().description()});
    return geometry;
}

/// Brings what the capture thread tells to the main thread.
CaptureSession::Listener CaptureEngine::sessionListener() {
    return {.interrupted =
                [&loop = m_loop, self = m_self](const CaptureError& error) {
                    loop.post([self, error] {
                        if (*self != nullptr) (*self)->sessionInterrupted(error);
                    });
                },
            .noticed =
                [&loop = m_loop, self = m_self](const std::string& sentence) {
                    loop.post([self, sentence] {
                        if (*self != nullptr && (*self)->onNotice) (*self)->onNotice(sentence);
                    });
                }};
}

void CaptureEngine::sessionInterrupted(const CaptureError& error) {
    if (isRecording() && onStreamStopped) onStreamStopped(error);
}

std::optional<CaptureProgress> CaptureEngine::progress() const {
    if (!isRecording()) return std::nullopt;
    return m_session->progress();
}

void CaptureEngine::pause(HostTime now) {
    if (m_state != State::Recording) return;
    m_state = State::Paused;
    m_session->pause(now);
}

void CaptureEngine::resume(HostTime now) {
    if (m_state != State::Paused) return;
    m_state = State::Recording;
    m_session->resume(now);
}

Task<Result<CapturedRecording, CaptureError>> CaptureEngine::stopCapture(HostTime now) {
    if (m_state == State::Finishing) co_return failure(CaptureError{CaptureError::Kind::StopInProgress, {}});
    if (!isRecording()) co_return failure(CaptureError{CaptureError::Kind::NotRecording, {}});
    m_state = State::Finishing;
    m_session->stop(now);
    auto recording = co_await onWorker(m_loop, [this] { return m_session->result(); });
    m_session.reset();
    m_state = State::Idle;
    co_return recording;
}

} // namespace morvelin
