#include "capture/Take.h"

#include <fmt/format.h>

#include "media/PNG.h"

namespace morvelin {

namespace {

namespace fs = std::filesystem;

/// An image that can't be made a PNG is left out.
ProjectBundle::CursorShapeFiles shapeFiles(const RecordedCursorShapes& recorded, const Log& log) {
    ProjectBundle::CursorShapeFiles files{recorded.track, {}};
    for (const auto& [id, image] : recorded.images) {
        if (auto png = encodePNG(image))
            files.images.emplace(id, std::string(png->begin(), png->end()));
        else
            log(fmt::format("[Morvelin] Could not store cursor shape {}: {}", id, png.error().description()));
    }
    return files;
}

std::string interruptionMessage(const CaptureError& error) {
    return "The screen capture ended before Stop was pressed: " + error.description() +
           "\n\nThe take keeps everything recorded up to that point.";
}

std::optional<std::string> shortfallMessage(double lowestFrameRate) {
    if (lowestFrameRate >= FrameRateControl::kRates.front()) return std::nullopt;
    return fmt::format("The machine could not keep up: parts of the take have {} frames a second instead of {}.",
                       lowestFrameRate, FrameRateControl::kRates.front());
}

/// What is recorded, for a person who finds the take's folder.
std::string sourceText(const DisplayTarget& target) {
    return target.id.empty() ? "the primary display" : "display " + target.id;
}
std::string sourceText(const WindowTarget& target) {
    return target.id ? fmt::format("window {:#x}", *target.id) : "window " + target.title;
}
std::string sourceText(const AreaTarget& target) {
    const PointRect& rect = target.rect;
    return fmt::format("area {},{},{},{} {}", rect.x, rect.y, rect.width, rect.height, target.displayID);
}

} // namespace

std::string TakeError::title() const {
    switch (kind) {
    case Kind::DidNotStart: return "Recording didn’t start";
    case Kind::CouldNotSave: return "Couldn’t save the recording";
    }
    std::unreachable();
}

Take::Take(Services services, Options options)
    : m_services(std::move(services)),
      m_options(std::move(options)),
      m_engine(m_services.loop,
               {m_services.screen, m_services.audioInput, m_services.writers, m_services.clock, m_services.log}),
      m_tracker(m_services.loop, m_services.pointer, m_services.screen) {
    m_engine.onStreamStopped = [this](const CaptureError& error) {
        m_interruption = error;
        if (onInterrupted) onInterrupted();
    };
    m_engine.onNotice = [this](const std::string& sentence) { tell(sentence); };
    if (!m_options.camera) return;
    m_camera.emplace(m_services.loop, CameraSession::Services{m_services.cameras, m_services.writers, m_services.log},
                     [this](const std::string& sentence) { tell(sentence); });
    m_camera->onBegan = [this](HostTime firstSample) {
        m_cameraBegan = firstSample;
        journalCamera();
    };
}

Task<Result<void, TakeError>> Take::start() {
    if (auto opened = openFolder(); !opened)
        co_return failure(TakeError{TakeError::Kind::DidNotStart, opened.error().description(), opened.error().kind});
    if (m_camera) co_await m_camera->start(*m_options.camera, m_folder->camera());
    const SoundChoice sound{m_options.systemAudio, m_options.microphone};
    auto started = co_await m_engine.startCapture(m_options.target, m_folder->movie(), sound);
    if (!started) {
        if (m_camera) (void)co_await m_camera->stop(m_services.loop.now(), HostTime(), {});
        m_journal.reset();
        m_folder->remove();
        m_folder.reset();
        co_return failure(TakeError{TakeError::Kind::DidNotStart, started.error().description(), started.error().kind});
    }
    beginTracking(*started);
    m_reserve = DiskReserve(m_options.projectsFolder);
    m_watch.emplace(
        m_services.loop, [this] { return measure(); }, [this](const std::string& sentence) { tell(sentence); });
    co_return Result<void, TakeError>();
}

/// The take's own place, with its header in it, comes before anything is recorded.
Result<void, CaptureError> Take::openFolder() {
    m_startedAt = m_services.clock.now();
    const auto refused = [](const FileError& error) {
        return failure(CaptureError{CaptureError::Kind::OutputDirectoryCreationFailed, error.description()});
    };
    auto folder = TakeFolder::create(m_options.projectsFolder, ProjectBundle::recordingName(m_startedAt));
    if (!folder) return refused(folder.error());
    const TakeHeader header{
        .name = ProjectBundle::recordingName(m_startedAt),
        .createdAt = m_startedAt,
        .kind = m_options.kind,
        .source = std::visit([](const auto& target) { return sourceText(target); }, m_options.target)};
    auto journal = TakeJournal::create(*folder, header, m_services.log);
    if (!journal) {
        folder->remove();
        return refused(journal.error());
    }
    m_folder = std::move(*folder);
    m_journal = std::move(*journal);
    return {};
}

void Take::beginTracking(const CaptureStart& started) {
    m_geometry = started.geometry;
    m_firstFrameTime = started.firstFrameTime;
    m_journal->addArea(m_geometry->pointWidth(), m_geometry->pointHeight());
    m_shapes.emplace(
        m_services.pointer, m_geometry->pointPixelScale,
        CursorShapeRecorder::Listener{
            [this](const CursorShapeTrack::Shape& shape, const Image& image) { m_journal->add(shape, image); },
            [this](const CursorShapeTrack::Change& change) { m_journal->add(change); }});
    m_tracker.onEvent = [this](const CursorEvent& event) { m_journal->add(event); };
    m_tracker.start(m_geometry->area, m_geometry->windowID, started.firstFrameTime, &*m_shapes);
    journalCamera();
}

/// As soon as both movies have begun, whichever is the later.
void Take::journalCamera() {
    if (m_cameraBegan && m_geometry)
        m_journal->add(newCameraSettings(m_geometry->movieSize, *m_cameraBegan - m_firstFrameTime));
}

TakeWatch::Reading Take::measure() const {
    const auto capture = m_engine.progress();
    TakeWatch::Reading reading;
    if (capture && !m_engine.isPaused()) reading.lastTurn = capture->lastTurn;
    reading.takenBytes = m_folder->size();
    reading.freeBytes = m_services.freeSpace(m_options.projectsFolder);
    return reading;
}

void Take::tell(const std::string& sentence) const {
    if (onNotice) onNotice(sentence);
}

TakeProgress Take::progress() const {
    TakeProgress progress;
    if (const auto capture = m_engine.progress()) {
        progress.recorded = capture->recorded;
        progress.frames = capture->frames;
        progress.lostFrames = capture->lostFrames;
    }
    if (m_folder) progress.bytes = m_folder->size();
    progress.freeBytes = m_services.freeSpace(m_options.projectsFolder);
    return progress;
}

void Take::pause() {
    const HostTime now = m_services.loop.now();
    m_engine.pause(now);
    m_tracker.pause(now);
    if (m_camera) m_camera->pause(now);
}

void Take::resume() {
    const HostTime now = m_services.loop.now();
    m_engine.resume(now);
    m_tracker.resume(now);
    if (m_camera) m_camera->resume(now);
}

Task<Result<FinishedTake, TakeError>> Take::stop() {
    m_watch.reset();
    const HostTime now = m_services.loop.now();
    if (m_camera) m_camera->pause(now); // the screen's end may take a moment, of which the camera shall record nothing
    auto stopped = co_await m_engine.stopCapture(now);
    std::optional<FinishedCamera> camera;
    if (m_camera) camera = co_await m_camera->stop(now, m_firstFrameTime, m_geometry->movieSize);
    if (m_tracker.isTracking()) m_cursorEvents = m_tracker.stop();
    m_reserve.release();
    const auto recording = salvaged(std::move(stopped));
    if (!recording) co_return failure(TakeError{TakeError::Kind::CouldNotSave, recording.error().description()});
    auto shapes = co_await onWorker(m_services.loop, [this] {
        return shapeFiles(m_shapes->recorded(m_geometry->pointWidth(), m_geometry->pointHeight()), m_services.log);
    });
    co_return makeProject(*recording, camera, std::move(shapes));
}

/// A movie that could not be written to its end still holds all but its last second: the file tells how long it is.
Result<CapturedRecording, CaptureError> Take::salvaged(Result<CapturedRecording, CaptureError> recording) {
    if (recording || recording.error().kind != CaptureError::Kind::AssetWriterFailed) return recording;
    const auto reader = m_services.readers.open(m_folder->movie());
    if (!reader || (*reader)->properties().end.sinceZero() <= Seconds(0)) return recording;
    if (!m_interruption) m_interruption = recording.error();
    return CapturedRecording{m_folder->movie(), (*reader)->properties().end.sinceZero()};
}

Result<FinishedTake, TakeError> Take::makeProject(const CapturedRecording& recording,
                                                  const std::optional<FinishedCamera>& camera,
                                                  ProjectBundle::CursorShapeFiles shapes) {
    const std::string name = ProjectBundle::recordingName(m_startedAt);
    const ProjectBundle::FinishedTake take{.movie = recording.url,
                                           .bundleURL = m_folder->bundleURL(),
                                           .camera = camera ? std::optional(camera->movie) : std::nullopt,
                                           .cameraSettings = camera ? std::optional(camera->settings) : std::nullopt,
                                           .name = name,
                                           .createdAt = m_startedAt,
                                           .duration = recording.duration,
                                           .cursorEvents = std::move(m_cursorEvents),
                                           .cursorShapes = std::move(shapes),
                                           .kind = m_options.kind};
    auto bundle = ProjectBundle::createBundle(take, {m_services.ids, m_services.clock, m_services.log});
    if (!bundle)
        return failure(TakeError{
            TakeError::Kind::CouldNotSave,
            fmt::format("{} The movie is kept as “{}”.", bundle.error().description(), recording.url.string())});
    m_folder->remove();
    return FinishedTake{*bundle, name, recording.duration, m_interruption.transform(interruptionMessage),
                        shortfallMessage(recording.lowestFrameRate)};
}

} // namespace morvelin
