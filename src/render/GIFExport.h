// Renders a film into a finished GIF. Used by `ExportEngine`, on its thread.
#pragma once

#include <filesystem>
#include <stop_token>

#include "core/base/Result.h"
#include "render/ExportError.h"
#include "render/Film.h"
#include "render/FilmRenderer.h"
#include "render/MovieExport.h"

namespace morvelin {

/// One GIF to be written, in the film's size and at its rate.
struct GIFExport {
    const Film& film;
    FilmReaders readers;
    std::int64_t frameCount = 1;
    std::filesystem::path file;   ///< where it is written
    std::filesystem::path target; ///< what errors call it
};

/// The file is whole and on disk when it returns without an error.
Result<void, ExportError> writeGIF(const GIFExport& gif, const FramesDone& done, const std::stop_token& stop);

} // namespace morvelin
