// Decodes those frames of one movie that a part of a film shows, ahead of whoever draws them. Owned by one rendering.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <thread>

#include "core/base/Result.h"
#include "platform/MovieReader.h"
#include "render/BoundedQueue.h"
#include "render/Film.h"

namespace morvelin {

/// What a number of film frames in a row show of a movie: one of its frames, or why there is none to show.
struct FrameRun {
    Result<MovieFrame, MovieReaderError> frame;
    std::int64_t count = 0;
};

/// Runs the reader on a thread of its own, a few frames ahead. Frames that no film frame shows are not asked for. After
/// a frame that can't be read the next ones are not tried either, until the movie has had a chance to recover.
class DecodeAhead {
public:
    /// The movie's moment to ask for in a frame of the film.
    using MovieTimeOf = std::function<SourceTime(std::int64_t frame)>;

    /// The reader must outlive it; `timeOf` is called on the thread.
    DecodeAhead(FilmPart part, MovieTimeOf timeOf, MovieReader& reader);

    /// The next run. Nothing after the part's end, or on `stop`.
    std::optional<FrameRun> next(const std::stop_token& stop) { return m_queue.pop(stop); }

private:
    void run(const std::stop_token& stop);

    FilmPart m_part;
    MovieTimeOf m_timeOf;
    MovieReader& m_reader;
    BoundedQueue<FrameRun> m_queue;
    std::jthread m_thread; ///< last, so that it ends before what it uses
};

} // namespace morvelin
