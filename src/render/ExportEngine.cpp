#include "render/ExportEngine.h"

#include <fmt/format.h>

#include "core/base/Files.h"
#include "render/EventsSidecar.h"
#include "render/ExportFolder.h"
#include "render/Film.h"
#include "render/MovieExport.h"
#include "render/ProjectFilm.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

using Kind = ExportError::Kind;

ExportError errorOf(Kind kind) { return {kind, {}, {}}; }

VideoSettings settingsOf(const ExportRequest& request, const MovieProperties& movie) {
    return request.purpose == ExportPurpose::ForAI ? forAISettings(movie.size, movie.nominalFrameRate)
                                                   : mp4Settings(movie.size, movie.nominalFrameRate, request.quality);
}

FilmStyle styleOf(ExportPurpose purpose) {
    return purpose == ExportPurpose::ForAI ? FilmStyle::Plain : FilmStyle::OfProject;
}

/// A sidecar that can't be written is no failure of the export.
std::vector<fs::path> writeSidecars(const EventsSidecarSubject& subject, const fs::path& video, const Log& log) {
    const fs::path path = eventsSidecarPath(video);
    if (const auto written = writeFileAtomically(path, encode(makeEventsSidecar(subject))); !written) {
        log("[FounderMode] Failed to write events sidecar: " + written.error().description());
        return {};
    }
    return {path};
}

} // namespace

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
    if (request.format == ExportFormat::GIF && request.purpose == ExportPurpose::Viewing)
        return failure(errorOf(Kind::GifNotAvailable));

    std::stop_source stopper;
    const std::stop_callback forward(stop, [&] { stopper.request_stop(); });
    const auto entry = m_services.activity.add(m_services.ids.next(), {[&] { stopper.request_stop(); }});

    const EditPayload& edit = project.currentVersion().edit;
    const auto movies = FilmMovies::open(project, m_services.readers, m_services.log);
    if (!movies) return failure(movies.error());
    const MovieProperties& recording = movies->recording->properties();
    const VideoSettings settings = settingsOf(request, recording);
    const auto film = makeFilm(project, *movies, {settings.size, settings.frameRate, styleOf(request.purpose)},
                               m_services.log);
    if (!film) return failure(film.error());
    // A video of no length has no frame to write.
    if (film->frameCount() == 0) return failure(errorOf(Kind::ExportSessionFailed));

    const auto target = targetOf(request);
    if (!target) return failure(target.error());
    auto folder = ExportFolder::create(*target, m_services.ids);
    if (!folder) return failure(folder.error());
    const MovieExport movie{
        *film, {*movies->recording, movies->camera.get(), m_services.log}, settings, folder->file(), *target};
    const auto done = [&progress, count = film->frameCount()](std::int64_t frames) {
        if (progress) progress({frames, count});
    };
    if (auto written = writeMovie(movie, m_services.writers, done, stopper.get_token()); !written)
        return failure(written.error());
    if (stopper.stop_requested()) return failure(errorOf(Kind::Stopped));
    if (auto placed = folder->takePlace(); !placed) return failure(placed.error());

    ExportedFiles files{*target, {}};
    if (request.sidecars == SidecarChoice::Written)
        files.sidecars = writeSidecars({edit, project.cursorEvents, project.cameraURL.has_value(),
                                        target->filename().string(), film->composition.timelineDuration(),
                                        settings.size, settings.frameRate, m_services.applicationVersion},
                                       *target, m_services.log);
    return files;
}

} // namespace morvelin
