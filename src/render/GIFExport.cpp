#include "render/GIFExport.h"

#include "media/GIFWriter.h"
#include "render/Compositor.h"

namespace morvelin {

namespace {

/// A full disk and a folder that went have sentences of their own, whatever is written.
std::unexpected<ExportError> cannotWrite(int code, const std::filesystem::path& target) {
    ExportError error = ExportError::fromErrno(code, target);
    if (error.kind == ExportError::Kind::TargetNotWritable) error.kind = ExportError::Kind::GifDestinationFailed;
    return failure(std::move(error));
}

} // namespace

Result<void, ExportError> writeGIF(const GIFExport& gif, const FramesDone& done, const std::stop_token& stop) {
    const Film& film = gif.film;
    const auto writer = GIFWriter::create(gif.file, film.instruction->outputSize, film.frameRate);
    if (!writer) return cannotWrite(writer.error(), gif.target);

    Compositor compositor(film.instruction, Subsampling::None);
    const auto append = [&](std::int64_t number, const ComposedFrame& frame) -> Result<void, ExportError> {
        if (auto appended = (*writer)->append(frame.picture, frame.changed); !appended)
            return cannotWrite(appended.error(), gif.target);
        if (done) done(number + 1);
        return {};
    };
    if (auto rendered = renderPart(film, {0, gif.frameCount}, gif.readers, compositor, append, stop); !rendered)
        return rendered;
    if (auto finished = (*writer)->finish(); !finished) return cannotWrite(finished.error(), gif.target);
    return {};
}

} // namespace morvelin
