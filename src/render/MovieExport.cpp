#include "render/MovieExport.h"

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "core/base/Parallel.h"
#include "render/Compositor.h"
#include "render/FilmRenderer.h"

namespace morvelin {

namespace {

/// A part's length in groups of pictures: the shortest there is. It costs an encoder and a look back for the recording's
/// key frame; with longer ones the other processors wait longer for the film's last part.
constexpr std::int64_t kGroupsInPart = 1;
constexpr std::size_t kSoundBlock = 4096; ///< samples

MovieSettings movieSettings(const MovieExport& movie) {
    MovieSettings settings;
    settings.path = movie.file;
    settings.size = movie.settings.size;
    settings.frameRate = movie.settings.frameRate;
    settings.bitRate = movie.settings.bitRate;
    if (movie.sound != nullptr) settings.soundTracks.emplace_back();
    return settings;
}

/// The film's parts: threads take the next one to render, and one thread takes them, rendered, in their order.
class PartQueue {
public:
    using Rendered = Result<std::unique_ptr<MoviePart>, ExportError>;

    PartQueue(std::int64_t frameCount, std::int64_t partLength) : m_frameCount(frameCount), m_partLength(partLength) {}

    [[nodiscard]] std::int64_t partCount() const { return (m_frameCount + m_partLength - 1) / m_partLength; }
    [[nodiscard]] FilmPart part(std::int64_t index) const {
        return {index * m_partLength, std::min((index + 1) * m_partLength, m_frameCount)};
    }

    /// Waits until a part may be begun. Nothing when all are, or on `stop`.
    std::optional<std::int64_t> next(const std::stop_token& stop) {
        std::unique_lock guard(m_lock);
        const auto mayBegin = [&] { return m_next < m_placed + PartedMovieWriter::kPartsAhead; };
        if (m_next >= partCount() || !m_change.wait(guard, stop, mayBegin) || m_next >= partCount())
            return std::nullopt;
        return m_next++;
    }

    void deliver(std::int64_t index, Rendered part) {
        const std::scoped_lock guard(m_lock);
        m_rendered.emplace(index, std::move(part));
        m_change.notify_all();
    }

    /// Waits for part `index`. Nothing on `stop`.
    std::optional<Rendered> take(std::int64_t index, const std::stop_token& stop) {
        std::unique_lock guard(m_lock);
        if (!m_change.wait(guard, stop, [&] { return m_rendered.contains(index); })) return std::nullopt;
        return std::move(m_rendered.extract(index).mapped());
    }

    /// Says how many parts lie in the file.
    void placed(std::int64_t count) {
        const std::scoped_lock guard(m_lock);
        m_placed = count;
        m_change.notify_all();
    }

private:
    const std::int64_t m_frameCount;
    const std::int64_t m_partLength;

    std::mutex m_lock; ///< guards what follows
    std::condition_variable_any m_change;
    std::int64_t m_next = 0;
    std::int64_t m_placed = 0;
    std::map<std::int64_t, Rendered> m_rendered;
};

/// Counts frames that several threads finish.
class FrameCounter {
public:
    explicit FrameCounter(const FramesDone& done) : m_done(done) {}

    void add() {
        const std::scoped_lock guard(m_lock);
        ++m_frames;
        if (m_done) m_done(m_frames);
    }

private:
    const FramesDone& m_done;
    std::mutex m_lock; ///< guards `m_frames`, and lets `m_done` be called by one at a time
    std::int64_t m_frames = 0;
};

/// Renders parts on a thread of its own until there are no more.
class PartRenderer {
public:
    PartRenderer(const MovieExport& movie, PartedMovieWriter& writer, PartQueue& queue, FrameCounter& counter)
        : m_movie(movie),
          m_writer(writer),
          m_queue(queue),
          m_counter(counter) {}

    void run(const std::stop_token& stop) {
        auto movies = m_movie.openMovies();
        Compositor compositor(m_movie.film.instruction, Subsampling::Quarter);
        while (const auto index = m_queue.next(stop)) {
            if (!movies) {
                m_queue.deliver(*index, failure(movies.error()));
                return;
            }
            m_queue.deliver(*index, render(*index, *movies, compositor, stop));
        }
    }

private:
    PartQueue::Rendered render(std::int64_t index, const FilmMovies& movies, Compositor& compositor,
                               const std::stop_token& stop) {
        auto part = m_writer.begin(index);
        if (!part) return failure(ExportError::from(part.error(), m_movie.target));
        const auto append = [&](std::int64_t, const ComposedFrame& frame) -> Result<void, ExportError> {
            auto appended = (*part)->append(frame.picture, frame.changed);
            if (!appended) return failure(ExportError::from(appended.error(), m_movie.target));
            m_counter.add();
            return {};
        };
        const FilmReaders readers{*movies.recording, movies.camera.get(), m_movie.log};
        auto rendered = renderPart(m_movie.film, m_queue.part(index), readers, compositor, append, stop);
        if (!rendered) return failure(rendered.error());
        if (auto finished = (*part)->finish(); !finished)
            return failure(ExportError::from(finished.error(), m_movie.target));
        return std::move(*part);
    }

    const MovieExport& m_movie;
    PartedMovieWriter& m_writer;
    PartQueue& m_queue;
    FrameCounter& m_counter;
};

/// Writes the sound up to `end`.
Result<void, MovieWriterError> writeSound(SoundMix& sound, Seconds end, PartedMovieWriter& writer) {
    const auto last = std::min(sound.length(), soundSamples(end));
    std::vector<float> samples;
    while (sound.position() < last) {
        const auto count = std::min(kSoundBlock, static_cast<std::size_t>(last - sound.position()));
        samples.resize(count * kSoundChannels);
        sound.read(samples);
        if (auto written = writer.appendSound(0, samples); !written) return written;
    }
    return {};
}

/// Sound first: the file then has each stretch of it beside its pictures.
Result<void, MovieWriterError> placePart(const MovieExport& movie, std::unique_ptr<MoviePart> part, Seconds end,
                                         PartedMovieWriter& writer) {
    if (movie.sound != nullptr)
        if (auto written = writeSound(*movie.sound, end, writer); !written) return written;
    return writer.place(std::move(part));
}

} // namespace

Result<void, ExportError> writeMovie(const MovieExport& movie, PartedMovieWriterFactory& writers,
                                     const FramesDone& done, const std::stop_token& stop) {
    const MovieSettings settings = movieSettings(movie);
    const auto writer = writers.createParted(settings);
    if (!writer) return failure(ExportError::from(writer.error(), movie.target));

    const Film& film = movie.film;
    const auto group = std::llround(settings.keyFrameInterval.value * settings.frameRate);
    PartQueue queue(film.frameCount(), std::max<std::int64_t>(1, kGroupsInPart * group));
    FrameCounter counter(done);
    PartRenderer renderer(movie, **writer, queue, counter);

    std::stop_source stopper; // also ends the threads when a part fails
    const std::stop_callback forward(stop, [&] { stopper.request_stop(); });
    std::vector<std::jthread> threads;
    struct StopOnReturn {
        std::stop_source& stopper;
        ~StopOnReturn() { stopper.request_stop(); }
    } const stopOnReturn{stopper}; // before the threads are joined
    const auto count = movie.threads > 0 ? static_cast<std::size_t>(movie.threads) : processorCount();
    for (std::size_t i = 0; i < std::min(count, static_cast<std::size_t>(queue.partCount())); ++i)
        threads.emplace_back([&] { renderer.run(stopper.get_token()); });

    for (std::int64_t index = 0; index < queue.partCount(); ++index) {
        auto part = queue.take(index, stop);
        if (!part) return failure(ExportError{ExportError::Kind::Stopped, {}, {}});
        if (!*part) return failure(part->error());
        const Seconds end = film.frameTime(queue.part(index).end).sinceZero();
        if (auto placed = placePart(movie, std::move(**part), end, **writer); !placed)
            return failure(ExportError::from(placed.error(), movie.target));
        queue.placed(index + 1);
    }
    if (auto finished = (*writer)->finish(); !finished)
        return failure(ExportError::from(finished.error(), movie.target));
    return {};
}

} // namespace morvelin
