// The named operation "write a movie in parts": stretches of a film are encoded side by side and put together in their
// order. Owned by an export.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "core/base/Result.h"
#include "platform/MovieWriter.h"
#include "platform/Picture.h"

namespace morvelin {

/// One stretch of a film on its way to its place in the movie. One thread at a time; not tied to one.
class MoviePart {
public:
    virtual ~MoviePart() = default;

    /// Adds the next frame. `changed` lists the boxes in which it differs from the one before; what it says of the
    /// part's first frame does not count. The picture may be reused once the call is back.
    virtual Result<void, MovieWriterError> append(const Picture& picture, std::span<const PixelBox> changed) = 0;
    /// Says that no frame follows.
    virtual Result<void, MovieWriterError> finish() = 0;
};

/// Writes one MP4 of parts, the same bytes however many of them are encoded at a time. Every frame lasts one period of
/// the settings' frame rate.
class PartedMovieWriter {
public:
    /// So many parts may be begun beyond those that lie in the file: more would only fill the memory. How finely a part
    /// is encoded depends on what those before these came to.
    static constexpr std::int64_t kPartsAhead = 8;

    virtual ~PartedMovieWriter() = default;

    /// Opens part `index`, counted from 0; part `index - kPartsAhead` has been placed. From any thread.
    virtual Result<std::unique_ptr<MoviePart>, MovieWriterError> begin(std::int64_t index) = 0;

    /// Puts the next part, which is finished, into the file. This, sound and the end come from one thread.
    virtual Result<void, MovieWriterError> place(std::unique_ptr<MoviePart> part) = 0;
    /// Adds interleaved samples to a track; see `MovieWriter`.
    virtual Result<void, MovieWriterError> appendSound(std::size_t track, std::span<const float> samples) = 0;
    /// Completes the file, which ends with its last frame. Its data is on disk when it returns.
    virtual Result<void, MovieWriterError> finish() = 0;
};

/// Makes writers of parts; the program's composition chooses the back-end.
class PartedMovieWriterFactory {
public:
    virtual ~PartedMovieWriterFactory() = default;
    virtual Result<std::unique_ptr<PartedMovieWriter>, MovieWriterError> createParted(
        const MovieSettings& settings) = 0;
};

} // namespace morvelin
