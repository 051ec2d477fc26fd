#include "render/MovieExport.h"

#include "render/Compositor.h"

namespace morvelin {

namespace {

MovieSettings movieSettings(const MovieExport& movie) {
    MovieSettings settings;
    settings.path = movie.file;
    settings.size = movie.settings.size;
    settings.frameRate = movie.settings.frameRate;
    settings.bitRate = movie.settings.bitRate;
    return settings;
}

} // namespace

Result<void, ExportError> writeMovie(const MovieExport& movie, MovieWriterFactory& writers, const FramesDone& done,
                                     const std::stop_token& stop) {
    const auto writer = writers.create(movieSettings(movie));
    if (!writer) return failure(ExportError::from(writer.error(), movie.target));

    const Film& film = movie.film;
    Compositor compositor(film.instruction, Subsampling::Quarter);
    const auto append = [&](std::int64_t number, const ComposedFrame& frame) -> Result<void, ExportError> {
        auto appended = (*writer)->append(frame.picture, film.frameTime(number).sinceZero(), frame.changed);
        if (!appended) return failure(ExportError::from(appended.error(), movie.target));
        if (done) done(number + 1);
        return {};
    };
    if (auto rendered = renderPart(film, {0, film.frameCount()}, movie.readers, compositor, append, stop); !rendered)
        return rendered;
    if (auto finished = (*writer)->finish(film.length()); !finished)
        return failure(ExportError::from(finished.error(), movie.target));
    return {};
}

} // namespace morvelin
