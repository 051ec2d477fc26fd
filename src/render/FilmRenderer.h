// Renders a part of a film, frame after frame, into whatever takes the frames.
#pragma once

#include <functional>
#include <stop_token>

#include "core/base/Result.h"
#include "platform/MovieReader.h"
#include "render/Compositor.h"
#include "render/ExportError.h"
#include "render/Film.h"

namespace morvelin {

/// Takes frame `number` of the film; its picture is valid during the call. An error ends the rendering.
using FrameSink = std::function<Result<void, ExportError>(std::int64_t number, const ComposedFrame& frame)>;

/// Decodes on a thread of its own, draws and calls `sink` on the caller's. Reader and compositor are used by this part
/// alone while it runs; `compositor` is of the film's instruction.
Result<void, ExportError> renderPart(const Film& film, FilmPart part, MovieReader& reader, Compositor& compositor,
                                     const FrameSink& sink, const std::stop_token& stop);

} // namespace morvelin
