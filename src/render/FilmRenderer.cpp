#include "render/FilmRenderer.h"

#include <algorithm>
#include <utility>

#include "render/DecodeAhead.h"
#include "render/FramePlan.h"

namespace morvelin {

namespace {

/// What a number of film frames in a row show.
struct ShownRun {
    ShownFrames frames;
    std::int64_t count = 0;
};

/// The runs of both movies as one, cut wherever either shows another frame.
class ShownRuns {
public:
    ShownRuns(const Film& film, FilmPart part, const FilmReaders& readers)
        : m_film(film),
          m_readers(readers),
          m_recording(
              part, [&film](std::int64_t i) { return film.composition.pictureTime(film.frameTime(i)); },
              readers.recording) {
        if (readers.camera != nullptr && film.showsCamera())
            m_camera.emplace(
                part, [&film](std::int64_t i) { return film.cameraTime(film.frameTime(i)); }, *readers.camera);
    }

    /// The run from frame `number` on. Fails when the recording can't be read, or on `stop`.
    Result<ShownRun, ExportError> next(std::int64_t number, const std::stop_token& stop) {
        if (m_recordingRun.count == 0 && !advance(m_recording, m_recordingRun, stop)) return stopped();
        if (!m_recordingRun.frame) return failure(ExportError::from(m_recordingRun.frame.error()));
        ShownRun run{{*m_recordingRun.frame, std::nullopt}, m_recordingRun.count};
        if (m_camera) {
            if (m_cameraRun.count == 0) {
                if (!advance(*m_camera, m_cameraRun, stop)) return stopped();
                if (!m_cameraRun.frame) tellOfMissingCamera(number);
            }
            if (m_cameraRun.frame) run.frames.camera = *m_cameraRun.frame;
            run.count = std::min(run.count, m_cameraRun.count);
            m_cameraRun.count -= run.count;
        }
        m_recordingRun.count -= run.count;
        return run;
    }

private:
    static std::unexpected<ExportError> stopped() { return failure(ExportError{ExportError::Kind::Stopped, {}, {}}); }

    static bool advance(DecodeAhead& decoder, FrameRun& run, const std::stop_token& stop) {
        auto next = decoder.next(stop);
        if (next) run = std::move(*next);
        return next.has_value();
    }

    void tellOfMissingCamera(std::int64_t number) const {
        if (!m_readers.log) return;
        const MovieProperties& movie = m_readers.camera->properties();
        const SourceTime t = m_film.cameraTime(m_film.frameTime(number));
        const bool isHeld = t < movie.start || t >= movie.end;
        m_readers.log(std::string(isHeld ? "[FragmentCompositionBuilder] Could not hold a camera frame: "
                                         : "[FragmentCompositionBuilder] Could not lay out camera fragment: ") +
                      m_cameraRun.frame.error().description());
    }

    const Film& m_film;
    const FilmReaders& m_readers;
    FrameRun m_recordingRun; ///< what is left of it
    FrameRun m_cameraRun;
    DecodeAhead m_recording;
    std::optional<DecodeAhead> m_camera;
};

} // namespace

Result<void, ExportError> renderPart(const Film& film, FilmPart part, const FilmReaders& readers,
                                     Compositor& compositor, const FrameSink& sink, const std::stop_token& stop) {
    ShownRuns runs(film, part, readers);
    for (std::int64_t number = part.first; number < part.end;) {
        const auto shown = runs.next(number, stop);
        if (!shown) return failure(shown.error());

        for (const std::int64_t end = number + shown->count; number < end; ++number) {
            if (stop.stop_requested()) return failure(ExportError{ExportError::Kind::Stopped, {}, {}});
            const FramePlan plan = framePlan(*film.instruction, film.frameTime(number), shown->frames.numbers());
            if (auto taken = sink(number, compositor.compose(plan, shown->frames)); !taken) return taken;
        }
    }
    return {};
}

} // namespace morvelin
