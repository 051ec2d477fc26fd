#include "capture/Take.h"

#include <fmt/format.h>

#include "media/PNG.h"

namespace morvelin {

namespace {

namespace fs = std::filesystem;

constexpr const char* kMovieExtension = ".mov";

/// `<name>.mov` with a name that neither a movie nor a project in the folder has.
fs::path freeMovieURL(const fs::path& folder, const std::string& name) {
    const std::string stem = ProjectBundle::folderName(name);
    std::error_code ignored;
    for (int number = 1;; ++number) {
        const std::string numbered = number == 1 ? stem : fmt::format("{} {}", stem, number);
        const fs::path movie = folder / (numbered + kMovieExtension);
        if (!fs::exists(movie, ignored) && !fs::exists(folder / (numbered + ".morvelin"), ignored)) return movie;
    }
}

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

/// Where the movie ends earlier than the pointer's track, the track ends with it.
void cutAt(Seconds duration, std::vector<CursorEvent>& events, CursorShapeTrack& shapes) {
    std::erase_if(events, [&](const CursorEvent& event) { return event.timestamp.sinceZero() > duration; });
    std::erase_if(shapes.changes, [&](const auto& change) { return change.t.sinceZero() > duration; });
}

std::string interruptionMessage(const CaptureError& error) {
    return "The screen capture ended before Stop was pressed: " + error.description() +
           "\n\nThe take keeps everything recorded up to that point.";
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
      m_engine(m_services.loop, {m_services.screen, m_services.writers, m_services.clock, m_services.log}),
      m_tracker(m_services.loop, m_services.pointer) {
    m_engine.onStreamStopped = [this](const CaptureError& error) {
        m_interruption = error;
        if (onInterrupted) onInterrupted();
    };
}

Task<Result<void, TakeError>> Take::start() {
    m_startedAt = m_services.clock.now();
    m_movie = freeMovieURL(m_options.projectsFolder, ProjectBundle::recordingName(m_startedAt));
    auto started = co_await m_engine.startCapture(m_options.target, m_movie);
    if (!started) {
        (void)removeFile(m_movie);
        co_return failure(TakeError{TakeError::Kind::DidNotStart, started.error().description()});
    }
    m_geometry = started->geometry;
    m_shapes.emplace(m_services.pointer, m_geometry->pointPixelScale);
    m_tracker.start(m_geometry->area, started->firstFrameTime, &*m_shapes);
    m_reserve = DiskReserve(m_options.projectsFolder);
    co_return Result<void, TakeError>();
}

void Take::pause() {
    const HostTime now = m_services.loop.now();
    m_engine.pause(now);
    m_tracker.pause(now);
}

void Take::resume() {
    const HostTime now = m_services.loop.now();
    m_engine.resume(now);
    m_tracker.resume(now);
}

Task<Result<FinishedTake, TakeError>> Take::stop() {
    auto stopped = co_await m_engine.stopCapture(m_services.loop.now());
    if (m_tracker.isTracking()) m_cursorEvents = m_tracker.stop();
    m_reserve.release();
    const auto recording = salvaged(std::move(stopped));
    if (!recording) co_return failure(TakeError{TakeError::Kind::CouldNotSave, recording.error().description()});
    auto shapes = co_await onWorker(m_services.loop, [this] {
        return shapeFiles(m_shapes->recorded(m_geometry->pointWidth(), m_geometry->pointHeight()), m_services.log);
    });
    co_return makeProject(*recording, std::move(shapes));
}

/// A movie that could not be written to its end still holds all but its last second: the file tells how long it is.
Result<CapturedRecording, CaptureError> Take::salvaged(Result<CapturedRecording, CaptureError> recording) {
    if (recording || recording.error().kind != CaptureError::Kind::AssetWriterFailed) return recording;
    const auto reader = m_services.readers.open(m_movie);
    if (!reader || (*reader)->properties().end.sinceZero() <= Seconds(0)) return recording;
    if (!m_interruption) m_interruption = recording.error();
    return CapturedRecording{m_movie, (*reader)->properties().end.sinceZero()};
}

Result<FinishedTake, TakeError> Take::makeProject(const CapturedRecording& recording,
                                                  ProjectBundle::CursorShapeFiles shapes) {
    cutAt(recording.duration, m_cursorEvents, shapes.track);
    const std::string name = ProjectBundle::recordingName(m_startedAt);
    const ProjectBundle::FinishedTake take{.movie = recording.url,
                                           .camera = {},
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
    return FinishedTake{*bundle, name, recording.duration, m_interruption.transform(interruptionMessage)};
}

} // namespace morvelin
