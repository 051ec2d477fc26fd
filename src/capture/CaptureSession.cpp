#include "capture/CaptureSession.h"

#include <cerrno>

#include <fmt/format.h>
#include <pthread.h>

namespace morvelin {

namespace {

/// Names of threads end after 15 characters: what is left of "com.morvelin.capture".
constexpr const char* kThreadName = "com.morvelin.ca";
constexpr Seconds kFirstFramePatience{5};
/// How long the last frame shows when the take ends at once after it.
constexpr Seconds kShortestLastFrame{1.0 / 60};
/// The capture thread comes round at least so often, and so whoever watches it knows that it works.
constexpr Seconds kLongestTurn{0.5};
/// How long a stop waits for a screen or an encoder that is in the middle of something.
constexpr std::chrono::seconds kStopPatience{2};
constexpr Seconds kSoundInterval{0.05};
constexpr Seconds kSoundIntervalInPause{0.25};

CaptureError interruption(const ScreenError& error) { return {CaptureError::Kind::Interrupted, error.description()}; }

CaptureError interruption(const MovieWriterError& error) {
    if (error.code == ENOSPC || error.code == EDQUOT)
        return {CaptureError::Kind::Interrupted, "There is no space left on the disk for the recording."};
    return {CaptureError::Kind::Interrupted, "The movie could not be written: " + error.description()};
}

CaptureError setupError(const MovieWriterError& error, PixelSize size) {
    std::string detail = error.description();
    if (error.kind == MovieWriterError::Kind::NoEncoder)
        detail = fmt::format("No compatible video codec for {} × {}. {}", size.width, size.height, detail);
    return {CaptureError::Kind::AssetWriterSetupFailed, std::move(detail)};
}

MovieSettings movieSettings(const std::filesystem::path& movie, PixelSize size,
                            std::vector<SoundTrackSettings> soundTracks) {
    return {.path = movie,
            .container = MovieSettings::Container::FragmentedQuickTime,
            .pace = MovieSettings::Pace::RealTime,
            .transfer = MovieSettings::Transfer::SRGB,
            .size = size,
            .frameRate = 60,
            .bitRate = captureBitRate(size),
            .keyFrameInterval = Seconds(1),
            .soundTracks = std::move(soundTracks)};
}

} // namespace

Result<std::unique_ptr<CaptureSession>, CaptureError> CaptureSession::start(const Services& services,
                                                                            const CaptureGeometry& geometry,
                                                                            const SoundChoice& sound,
                                                                            std::filesystem::path movie,
                                                                            Listener listener) {
    std::unique_ptr<CaptureSession> session(new CaptureSession(services, std::move(movie), std::move(listener)));
    if (auto opened = session->open(geometry, sound); !opened) return passOn(std::move(opened));
    auto firstFrame = session->m_firstFrame.get_future();
    session->m_progress.lastTurn = services.clock.uptime();
    session->m_thread = std::thread([raw = session.get()] { raw->run(); });
    if (auto error = firstFrame.get()) {
        session->m_thread.join();
        return failure(std::move(*error));
    }
    return session;
}

CaptureSession::CaptureSession(Services services, std::filesystem::path movie, Listener listener)
    : m_services(std::move(services)),
      m_movie(std::move(movie)),
      m_listener(std::move(listener)) {}

CaptureSession::~CaptureSession() {
    if (!m_thread.joinable()) return;
    stop(m_services.clock.uptime());
    m_thread.join();
}

/// Sound comes first: it shall run when the first frame is there.
Result<void, CaptureError> CaptureSession::open(const CaptureGeometry& geometry, const SoundChoice& choice) {
    auto sound = SoundRecorder::open(m_services.audioInput, choice, m_listener.noticed, m_services.log);
    if (!sound) return failure(CaptureError{CaptureError::Kind::SoundUnavailable, sound.error().description()});
    m_sound = std::move(*sound);
    auto stream = m_services.screen.open(
        {.area = geometry.area, .displayID = geometry.displayID, .window = geometry.windowID});
    if (!stream) return failure(CaptureError{CaptureError::Kind::ScreenUnavailable, stream.error().description()});
    auto writer = m_services.writers.create(movieSettings(m_movie, geometry.movieSize, m_sound->trackSettings()));
    if (!writer) return failure(setupError(writer.error(), geometry.movieSize));
    m_stream = std::move(*stream);
    m_video.emplace(std::move(*writer), m_stream->size(), geometry.movieSize, m_services.log);
    return {};
}

void CaptureSession::pause(HostTime now) { send({Order::Pause, now}); }

void CaptureSession::resume(HostTime now) {
    {
        const std::lock_guard lock(m_progressMutex);
        m_progress.lastTurn = now; // it had no turns to take in the pause
    }
    send({Order::Resume, now});
}

void CaptureSession::stop(HostTime now) { send({Order::Stop, now}); }

void CaptureSession::send(Command command) {
    {
        const std::lock_guard lock(m_mutex);
        m_commands.push_back(command);
    }
    m_hasCommands.notify_one();
    m_stream->interrupt();
}

Result<CapturedRecording, CaptureError> CaptureSession::result() {
    if (m_thread.joinable()) {
        if (m_hasEnded.wait_for(kStopPatience) == std::future_status::timeout) m_stream->cut();
        m_thread.join();
    }
    return *m_result;
}

// ------------------------------------------------------------------------------------------- the capture thread

void CaptureSession::run() {
    pthread_setname_np(pthread_self(), kThreadName);
    if (auto error = captureFirstFrame()) {
        m_firstFrame.set_value(std::move(error));
        m_end.set_value();
        return;
    }
    m_firstFrameTime = *m_video->firstVideoPTS();
    m_sound->begin(m_firstFrameTime);
    m_firstFrame.set_value(std::nullopt);

    std::optional<CaptureError> error;
    while (!m_stopTime && !error) error = captureNext();
    const HostTime end = m_stopTime.value_or(m_services.clock.uptime());
    if (error) m_services.log("[CaptureEngine] Stream stopped with error");
    m_result = finish(end);
    m_end.set_value();
    if (error) m_listener.interrupted(*error);
}

void CaptureSession::noteTurn() {
    const HostTime now = m_services.clock.uptime();
    const std::lock_guard lock(m_progressMutex);
    m_progress.lastTurn = now;
    m_progress.recorded = m_pauses.adjusted(now) - m_video->sessionStartTime().value_or(now);
    m_progress.frames = m_video->appendedFrames();
    m_progress.lostFrames = m_lostFrames.count();
}

CaptureProgress CaptureSession::progress() const {
    const std::lock_guard lock(m_progressMutex);
    return m_progress;
}

std::optional<CaptureError> CaptureSession::captureFirstFrame() {
    auto captured = captureFrame(kFirstFramePatience);
    if (!captured) return CaptureError{CaptureError::Kind::ScreenUnavailable, captured.error().detail};
    if (!*captured) return CaptureError{CaptureError::Kind::ScreenUnavailable, "The screen gave no picture."};
    return std::nullopt;
}

/// One turn of the capture: obeys, waits for the screen, writes.
std::optional<CaptureError> CaptureSession::captureNext() {
    obeyCommands();
    if (m_stopTime) return std::nullopt;
    noteTurn();
    if (auto error = writeSound()) return error;
    if (m_pauses.isPaused()) {
        if (auto written = m_video->flush(m_services.clock.uptime(), m_pauses); !written)
            return interruption(written.error());
        waitForCommand();
        return std::nullopt;
    }
    Seconds patience = std::min(m_video->patience(m_services.clock.uptime()), kLongestTurn);
    if (m_sound->hasTracks()) patience = std::min(patience, kSoundInterval);
    auto captured = captureFrame(patience);
    if (!captured) return std::move(captured).error();
    if (*captured) return std::nullopt;
    if (auto written = m_video->idle(m_services.clock.uptime(), m_pauses); !written)
        return interruption(written.error());
    return std::nullopt;
}

/// True when a frame came within the time.
Result<bool, CaptureError> CaptureSession::captureFrame(Seconds patience) {
    Result<void, MovieWriterError> written;
    const auto came = m_stream->next(patience, [&](const ScreenFrame& frame) {
        written = m_video->take(frame, m_pauses);
        const HostTime now = m_services.clock.uptime();
        m_lostFrames.recorded(frame.time, now, m_frameRate.interval());
        if (const auto interval = m_frameRate.recorded(now, now - frame.time)) m_stream->pace(*interval);
    });
    if (!came) return failure(interruption(came.error()));
    if (!written) return failure(interruption(written.error()));
    return *came;
}

/// Little by little, so that no frame has to wait for much sound to be encoded.
std::optional<CaptureError> CaptureSession::writeSound() {
    const HostTime now = m_services.clock.uptime();
    if (!m_sound->hasTracks() || now - m_soundWrittenAt < kSoundInterval) return std::nullopt;
    m_soundWrittenAt = now;
    const auto written = m_sound->write(now, m_video->writer());
    if (!written) return interruption(written.error());
    if (*written) m_video->soundAppended(now);
    return std::nullopt;
}

void CaptureSession::obeyCommands() {
    std::vector<Command> commands;
    {
        const std::lock_guard lock(m_mutex);
        commands.swap(m_commands);
    }
    for (const auto& [order, time] : commands) {
        switch (order) {
        case Order::Pause:
            m_pauses.pause(time);
            m_sound->pause(time);
            break;
        case Order::Resume:
            m_pauses.resume(time);
            m_sound->resume(time);
            break;
        case Order::Stop: m_stopTime = time; break;
        }
    }
}

/// While paused the screen isn't asked: what changes meanwhile is in the first frame afterwards. Sound is still read, so
/// that its clock stays known.
void CaptureSession::waitForCommand() {
    std::unique_lock lock(m_mutex);
    const auto hasCommand = [this] { return !m_commands.empty(); };
    if (m_sound->hasTracks())
        m_hasCommands.wait_for(lock, std::chrono::duration<double>(kSoundIntervalInPause.value), hasCommand);
    else
        m_hasCommands.wait(lock, hasCommand);
}

Result<CapturedRecording, CaptureError> CaptureSession::finish(HostTime end) {
    const auto start = m_video->sessionStartTime();
    const auto last = m_video->lastAppendedPTS();
    if (!start || !last) {
        m_services.log(fmt::format("[CaptureEngine] Warning: recording stopped without appended video samples ({})",
                                   m_video->appendedFrames()));
        return failure(CaptureError{CaptureError::Kind::AssetWriterFailed, "No picture was recorded."});
    }
    const HostTime adjustedEnd = std::max(m_pauses.adjusted(end), *last + kShortestLastFrame);
    // A writer that fails fails at its end too, and tells more there.
    (void)m_sound->finish(end, adjustedEnd - *start, m_video->writer());
    if (auto finished = m_video->finish(adjustedEnd); !finished)
        return failure(CaptureError{CaptureError::Kind::AssetWriterFailed, finished.error().description()});
    return CapturedRecording{m_movie, adjustedEnd - *start, m_frameRate.lowestRate()};
}

} // namespace morvelin
