// Renders a part of a film, frame after frame, into whatever takes the frames.
#pragma once

#include <functional>
#include <stop_token>

#include "core/base/Log.h"
#include "core/base/Result.h"
#include "platform/MovieReader.h"
#include "render/Compositor.h"
#include "render/ExportError.h"
#include "render/Film.h"

namespace morvelin {

/// What a part of a film reads; used by this part alone while it runs.
struct FilmReaders {
    MovieReader& recording;
    MovieReader* camera = nullptr; ///< null: the film goes without the camera's bubble
    Log log;                       ///< hears why a stretch of the camera is missing
};

/// Takes frame `number` of the film; its picture is valid during the call. An error ends the rendering.
using FrameSink = std::function<Result<void, ExportError>(std::int64_t number, const ComposedFrame& frame)>;

/// Decodes each movie on a thread of its own, draws and calls `sink` and `log` on the caller's. `compositor` is of the
/// film's instruction and used by this part alone. A camera that can't be read costs only its bubble.
Result<void, ExportError> renderPart(const Film& film, FilmPart part, const FilmReaders& readers,
                                     Compositor& compositor, const FrameSink& sink, const std::stop_token& stop);

} // namespace morvelin
