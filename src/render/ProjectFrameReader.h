// Stills of a project for those who can't watch a video: a frame as it was recorded, or as an export would draw it. Owned
// by whoever answers for a series of them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "core/base/Log.h"
#include "core/base/Result.h"
#include "platform/MovieReader.h"
#include "render/Compositor.h"
#include "render/FrameError.h"
#include "render/ProjectFilm.h"
#include "storage/FileState.h"
#include "storage/ProjectBundle.h"

namespace morvelin {

/// Keeps what the last still was made with: a second one costs no more than its decoding. One thread at a time.
class ProjectFrameReader {
public:
    using Clock = FrameClock;

    struct Frame {
        std::vector<std::uint8_t> pngData;
        PixelSize size;
        std::optional<EditTime> timelineTime; ///< absent where the moment was cut
        SourceTime sourceTime;
    };

    /// The factory must outlive the reader.
    ProjectFrameReader(MovieReaderFactory& readers, Log log) : m_readers(readers), m_log(std::move(log)) {}

    /// From now on stills are of this project, as its files are. Movies stay open while they are the same files, and all
    /// else while `project` is the same object.
    void show(std::shared_ptr<const ProjectBundle::Contents> project);

    /// The recording's own frame. It is taken a moment before `at`, so that the end of a span can be read.
    [[nodiscard]] Result<Frame, FrameError> read(double at, Clock clock, int maxLongEdge);
    /// The frame of the finished video that shows at `at`, drawn at an export's usual size before it is made smaller.
    [[nodiscard]] Result<Frame, FrameError> readRendered(EditTime at, int maxLongEdge);

private:
    struct OpenMovies {
        std::vector<FileState> files;
        FilmMovies movies;
    };
    struct OpenFilm {
        Film film;
        Compositor compositor;
    };

    [[nodiscard]] const EditPayload& edit() const { return m_project->currentVersion().edit; }
    Result<const FilmMovies*, FrameError> movies();
    Result<OpenFilm*, FrameError> film();

    MovieReaderFactory& m_readers;
    Log m_log;
    std::shared_ptr<const ProjectBundle::Contents> m_project;
    std::optional<OpenMovies> m_movies;
    std::optional<OpenFilm> m_film;
};

} // namespace morvelin
