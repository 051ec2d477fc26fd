// From a project to the film of its current version: the one preparation that exports and stills share.
#pragma once

#include <memory>

#include "core/base/Log.h"
#include "core/base/Result.h"
#include "platform/MovieReader.h"
#include "render/Compositor.h"
#include "render/ExportError.h"
#include "render/Film.h"
#include "render/FilmInstruction.h"
#include "storage/ProjectBundle.h"

namespace morvelin {

/// A project's movies, open for decoding. One thread at a time.
struct FilmMovies {
    std::unique_ptr<MovieReader> recording;
    std::unique_ptr<MovieReader> camera; ///< null without a camera's movie that can be read

    [[nodiscard]] static Result<FilmMovies, ExportError> open(const ProjectBundle::Contents& project,
                                                              MovieReaderFactory& readers, const Log& log);
};

/// What becomes of an edit that shows moments which the recording has lost: its end is cut off.
enum class LostEnd {
    Refused,
    Kept ///< every moment stays in its place; the recording's last frame stands for those that are lost
};

/// How a film comes out.
struct FilmForm {
    PixelSize size;
    double frameRate = 60;
    FilmStyle style = FilmStyle::OfProject;
    LostEnd lostEnd = LostEnd::Refused;
};

/// The film of the current version as it is on disk, with all that it is drawn from read.
[[nodiscard]] Result<Film, ExportError> makeFilm(const ProjectBundle::Contents& project, const FilmMovies& movies,
                                                 const FilmForm& form, const Log& log);

/// Whether a moment of the recording lies behind the end of what its movie holds.
[[nodiscard]] bool isLost(SourceTime moment, const MovieProperties& recording);

/// The movies' frames that show at `t`. A camera that can't be decoded costs only its bubble.
[[nodiscard]] Result<ShownFrames, MovieReaderError> framesAt(const Film& film, const FilmMovies& movies, EditTime t);

} // namespace morvelin
