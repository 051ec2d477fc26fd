// Renders a film into a finished MP4 file, in parts side by side. Used by `ExportEngine`, on its thread.
#pragma once

#include <filesystem>
#include <functional>
#include <stop_token>

#include "core/base/Log.h"
#include "core/base/Result.h"
#include "platform/MovieParts.h"
#include "render/ExportError.h"
#include "render/ExportSettings.h"
#include "render/Film.h"
#include "render/ProjectFilm.h"
#include "render/SoundMix.h"

namespace morvelin {

/// Called with the number of frames that are done, which grows; from several threads, one at a time.
using FramesDone = std::function<void(std::int64_t frames)>;

/// One MP4 to be written.
struct MovieExport {
    const Film& film;
    VideoSettings settings;
    /// Opens the film's movies once more, for each thread that renders; called on it.
    std::function<Result<FilmMovies, ExportError>()> openMovies;
    SoundMix* sound = nullptr;    ///< null: a film without sound
    std::filesystem::path file;   ///< where it is written
    std::filesystem::path target; ///< what errors call it
    int threads = 0;              ///< that render; 0: one for each processor. The file's bytes are the same.
    Log log;
};

/// The file is whole and on disk when it returns without an error.
Result<void, ExportError> writeMovie(const MovieExport& movie, PartedMovieWriterFactory& writers,
                                     const FramesDone& done, const std::stop_token& stop);

} // namespace morvelin
