#include "render/FilmRenderer.h"

#include "render/DecodeAhead.h"
#include "render/FramePlan.h"

namespace morvelin {

Result<void, ExportError> renderPart(const Film& film, FilmPart part, MovieReader& reader, Compositor& compositor,
                                     const FrameSink& sink, const std::stop_token& stop) {
    DecodeAhead decoder(film, part, reader);
    for (std::int64_t number = part.first; number < part.end;) {
        const auto shown = decoder.next(stop);
        if (!shown) return failure(shown.error());

        for (const std::int64_t end = number + shown->count; number < end; ++number) {
            if (stop.stop_requested()) return failure(ExportError{ExportError::Kind::Stopped, {}, {}});
            const FramePlan plan = framePlan(*film.instruction, film.frameTime(number), shown->frame.number);
            if (auto taken = sink(number, compositor.compose(plan, shown->frame)); !taken) return taken;
        }
    }
    return {};
}

} // namespace morvelin
