// Renders a film into a finished MP4 file. Used by `ExportEngine`, on its thread.
#pragma once

#include <filesystem>
#include <functional>
#include <stop_token>

#include "core/base/Result.h"
#include "platform/MovieWriter.h"
#include "render/ExportError.h"
#include "render/ExportSettings.h"
#include "render/Film.h"
#include "render/FilmRenderer.h"

namespace morvelin {

/// Called after a frame was written, with the number of frames that are done.
using FramesDone = std::function<void(std::int64_t frames)>;

/// One MP4 to be written.
struct MovieExport {
    const Film& film;
    FilmReaders readers;
    VideoSettings settings;
    std::filesystem::path file;   ///< where it is written
    std::filesystem::path target; ///< what errors call it
};

/// The file is whole and on disk when it returns without an error.
Result<void, ExportError> writeMovie(const MovieExport& movie, MovieWriterFactory& writers, const FramesDone& done,
                                     const std::stop_token& stop);

} // namespace morvelin
