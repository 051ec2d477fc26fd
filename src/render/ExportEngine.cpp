#include "render/ExportEngine.h"

#include <cstring>

#include <fmt/format.h>

#include "core/base/Files.h"
#include "render/EventsSidecar.h"
#include "render/ExportFolder.h"
#include "render/Film.h"
#include "render/GIFExport.h"
#include "render/MovieExport.h"
#include "render/ProjectFilm.h"
#include "render/ProjectSound.h"
#include "render/SidecarFile.h"
#include "render/TranscriptSidecar.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

using Kind = ExportError::Kind;

/// How far a GIF's progress goes before its file is whole.
constexpr double kUnfinishedGIF = 0.99;

ExportError errorOf(Kind kind) { return {kind, {}, {}}; }

std::uint64_t seedFrom(const UUID& id) {
    std::uint64_t seed = 0;
    std::memcpy(&seed, id.bytes.data(), sizeof seed);
    return seed;
}

/// What is made of a recording.
struct VideoForm {
    ExportFormat format = ExportFormat::MP4;
    VideoSettings settings;
    FilmStyle style = FilmStyle::OfProject;

    static VideoForm of(const ExportRequest& request, const MovieProperties& movie) {
        if (request.purpose == ExportPurpose::ForAI)
            return {ExportFormat::MP4, forAISettings(movie.size, movie.nominalFrameRate), FilmStyle::Plain};
        switch (request.format) {
        case ExportFormat::MP4:
            return {request.format, mp4Settings(movie.size, movie.nominalFrameRate, request.quality)};
        case ExportFormat::GIF: return {request.format, gifSettings(movie.size, request.quality)};
        }
        return {};
    }

    [[nodiscard]] std::int64_t frameCount(const Film& film) const {
        switch (format) {
        case ExportFormat::MP4: return film.frameCount();
        case ExportFormat::GIF: return gifFrameCount(film.composition.timelineDuration(), film.frameRate);
        }
        return 0;
    }
};

/// An export whose project has been read: whoever edits the project from now on does not change the video.
struct PreparedExport {
    FilmMovies movies;
    VideoForm form;
    Film film;
    std::int64_t frameCount = 0;
    std::unique_ptr<SoundMix> sound;           ///< null: a film without sound
    std::optional<HeardTranscript> transcript; ///< for its sidecar
};

Result<PreparedExport, ExportError> prepare(const ProjectBundle::Contents& project, const ExportRequest& request,
                                            const ExportEngine::Services& services) {
    auto movies = FilmMovies::open(project, services.readers, services.log);
    if (!movies) return failure(movies.error());
    const MovieProperties& recording = movies->recording->properties();
    const VideoForm form = VideoForm::of(request, recording);
    auto film = makeFilm(project, *movies, {form.settings.size, form.settings.frameRate, form.style}, services.log);
    if (!film) return failure(film.error());
    const std::int64_t frameCount = form.frameCount(*film);
    // A movie of no length has no frame to write.
    if (frameCount == 0) return failure(errorOf(Kind::ExportSessionFailed));

    using enum AudioStack::RecordingSound;
    SeededIdSource ids(0); // of captions that go no further
    auto transcript = heardTranscript(project.recordingURL.parent_path(), project.currentVersion().edit,
                                      recording.hasAudio ? Audible : Silent, {ids, services.clock}, services.log);
    auto sound = form.format == ExportFormat::MP4 ? openSound(project, *film, services.soundReaders, services.log)
                                                  : nullptr;
    return PreparedExport{std::move(*movies),   form, std::move(*film), frameCount, std::move(sound),
                          std::move(transcript)};
}

Result<void, ExportError> writeVideo(const ProjectBundle::Contents& project, const PreparedExport& prepared,
                                     const fs::path& file, const fs::path& target,
                                     const ExportEngine::Services& services, const FramesDone& done,
                                     const std::stop_token& stop) {
    switch (prepared.form.format) {
    case ExportFormat::MP4: {
        const auto openMovies = [&] { return FilmMovies::open(project, services.readers, services.log); };
        return writeMovie({prepared.film, prepared.form.settings, openMovies, prepared.sound.get(), file, target,
                           services.threads, services.log},
                          services.writers, done, stop);
    }
    case ExportFormat::GIF: {
        const FilmReaders readers{*prepared.movies.recording, prepared.movies.camera.get(), services.log};
        return writeGIF({prepared.film, readers, prepared.frameCount, file, target}, done, stop);
    }
    }
    return {};
}

/// A sidecar that can't be written is no failure of the export.
std::optional<fs::path> writeSidecar(const fs::path& video, const char* kind, const std::string& text, const Log& log) {
    const fs::path path = sidecarPath(video, kind);
    if (const auto written = writeFileAtomically(path, text); !written) {
        log(fmt::format("[FounderMode] Failed to write {} sidecar: {}", kind, written.error().description()));
        return std::nullopt;
    }
    return path;
}

void writeSidecars(const ProjectBundle::Contents& project, const PreparedExport& prepared, ExportedFiles& files,
                   const ExportEngine::Services& services) {
    const EditPayload& edit = project.currentVersion().edit;
    const VideoSettings& settings = prepared.form.settings;
    const std::string name = files.video.filename().string();
    const Seconds duration = prepared.film.composition.timelineDuration();
    const auto events = makeEventsSidecar({edit, project.cursorEvents, project.cameraURL.has_value(), name, duration,
                                           settings.size, settings.frameRate, services.applicationVersion});
    files.events = writeSidecar(files.video, "events", encode(events), services.log);
    if (!prepared.transcript) return;
    const auto transcript = makeTranscriptSidecar(
        {*prepared.transcript, edit.fragments, name, duration, services.applicationVersion});
    files.transcript = writeSidecar(files.video, "transcript", encode(transcript), services.log);
}

} // namespace

ExportEngine::ExportEngine(Services services)
    : m_services(std::move(services)),
      m_ids(seedFrom(m_services.ids.next())) {
    if (!m_services.log) m_services.log = [](std::string_view) {};
}

Result<fs::path, ExportError> ExportEngine::defaultOutputURL(ExportFormat format, ExportPurpose purpose) const {
    const fs::path folder = m_services.home / "Movies" / "Morvelin" / "Exports";
    const std::string extension(json::rawValue(format));
    const std::string stem = fmt::format("Export_{}", m_services.clock.now().unixSeconds());
    const std::string name = purpose == ExportPurpose::ForAI ? stem + "-mp4-agent.mp4" : stem + "." + extension;
    if (const auto made = createFolder(folder); !made)
        return failure(ExportError::fromErrno(made.error().code, folder / name));
    return folder / name;
}

Result<fs::path, ExportError> ExportEngine::targetOf(const ExportRequest& request) const {
    if (request.output) return fs::absolute(*request.output);
    return defaultOutputURL(request.format, request.purpose);
}

Result<ExportedFiles, ExportError> ExportEngine::exportProject(const ProjectBundle::Contents& project,
                                                               const ExportRequest& request,
                                                               const ProgressHandler& progress,
                                                               const std::stop_token& stop) {
    std::stop_source stopper;
    const std::stop_callback forward(stop, [&] { stopper.request_stop(); });
    const auto entry = m_services.activity.add(m_ids.next(), {[&] { stopper.request_stop(); }});

    const auto prepared = prepare(project, request, m_services);
    if (!prepared) return failure(prepared.error());
    const auto target = targetOf(request);
    if (!target) return failure(target.error());
    auto folder = ExportFolder::create(*target, m_ids);
    if (!folder) return failure(folder.error());

    const std::int64_t frameCount = prepared->frameCount;
    const double limit = prepared->form.format == ExportFormat::GIF ? kUnfinishedGIF : 1;
    const auto done = [&](std::int64_t frames) {
        if (progress) progress({frames, frameCount, limit});
    };
    const auto written = writeVideo(project, *prepared, folder->file(), *target, m_services, done, stopper.get_token());
    if (!written) return failure(written.error());
    if (stopper.stop_requested()) return failure(errorOf(Kind::Stopped));
    if (auto placed = folder->takePlace(); !placed) return failure(placed.error());
    if (progress && limit < 1) progress({frameCount, frameCount});

    ExportedFiles files{*target, {}, {}};
    if (m_services.sidecars == SidecarChoice::Written) writeSidecars(project, *prepared, files, m_services);
    return files;
}

} // namespace morvelin
