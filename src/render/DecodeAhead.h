// Decodes the recording's frames that a part of a film shows, ahead of whoever draws them. Owned by one rendering.
#pragma once

#include <optional>
#include <thread>

#include "core/base/Result.h"
#include "platform/MovieReader.h"
#include "render/BoundedQueue.h"
#include "render/ExportError.h"
#include "render/Film.h"

namespace morvelin {

/// A frame of the recording and the number of output frames in a row that show it.
struct ShownFrame {
    MovieFrame frame;
    std::int64_t count = 0;
};

/// Runs the reader on a thread of its own, a few frames ahead. Frames that no output frame shows are not asked for.
/// The film and the reader must outlive it.
class DecodeAhead {
public:
    DecodeAhead(const Film& film, FilmPart part, MovieReader& reader);

    /// The next frame that is shown. Fails when the recording can't be read, or on `stop`.
    Result<ShownFrame, ExportError> next(const std::stop_token& stop);

private:
    using Item = Result<ShownFrame, ExportError>;

    void run(const std::stop_token& stop);

    const Film& m_film;
    FilmPart m_part;
    MovieReader& m_reader;
    BoundedQueue<Item> m_queue;
    std::jthread m_thread; ///< last, so that it ends before what it uses
};

} // namespace morvelin
