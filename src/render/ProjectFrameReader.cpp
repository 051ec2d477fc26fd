#include "render/ProjectFrameReader.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "media/PNG.h"
#include "render/ExportSettings.h"
#include "render/FramePlan.h"
#include "render/StillPicture.h"
#include "timeline/FragmentMap.h"
#include "timeline/TrackLimits.h"

namespace morvelin {

namespace {

/// At exactly a frame's start a decoder may already give the frame after, and at a movie's end nothing.
constexpr Seconds kStepBack{1.0 / 120};
/// Moments are asked for in such parts of a second.
constexpr double kTimeScale = 600;

FrameError errorOf(const ExportError& error) {
    if (error.kind == ExportError::Kind::NoRecording) return {FrameError::NoRecording{}};
    return {FrameError::DecodeFailed{error.description()}};
}

std::unexpected<FrameError> decodeFailed(std::string reason) {
    return failure(FrameError(FrameError::DecodeFailed{std::move(reason)}));
}

std::unexpected<FrameError> cutOff(const MovieProperties& recording) {
    return decodeFailed(fmt::format("The recording is cut off at {:.2f} s.", recording.end.value));
}

/// The time, brought into the span where it is outside by no more than rounding; false for NaN too.
Result<double, FrameError> within(double at, Seconds duration, FrameClock clock) {
    const double slack = kRoundedTime.value;
    if (!(at >= -slack && at <= duration.value + slack))
        return failure(FrameError(FrameError::OutOfRange{at, duration, clock}));
    return std::clamp(at, 0.0, duration.value);
}

SourceTime decodedMoment(SourceTime moment, SourceTime end) {
    const SourceTime before = std::clamp(moment - kStepBack, SourceTime(0), std::max(end, SourceTime(0)));
    return SourceTime(std::round(before.value * kTimeScale) / kTimeScale);
}

/// A moment on both clocks.
struct Moments {
    std::optional<EditTime> timeline;
    SourceTime source;
};

Result<Moments, FrameError> momentsAt(double at, FrameClock clock, const FragmentMap& fragments,
                                      Seconds recordingDuration) {
    switch (clock) {
    case FrameClock::Timeline: {
        const auto time = within(at, fragments.duration(), clock);
        if (!time) return failure(time.error());
        const auto source = fragments.heldSourceTime(EditTime(*time));
        if (!source) return failure(FrameError(FrameError::OutOfRange{at, fragments.duration(), clock}));
        return Moments{EditTime(*time), source->time};
    }
    case FrameClock::Source: {
        const auto time = within(at, recordingDuration, clock);
        if (!time) return failure(time.error());
        return Moments{fragments.editTime(SourceTime(*time)), SourceTime(*time)};
    }
    }
    std::unreachable();
}

Result<ProjectFrameReader::Frame, FrameError> still(const Picture& picture, const Moments& moments, int maxLongEdge) {
    const PixelSize size = sizeWithin(picture.size(), maxLongEdge);
    auto png = encodePNG(imageOf(picture, size));
    if (!png) return failure(FrameError(FrameError::EncodingFailed{}));
    return ProjectFrameReader::Frame{std::move(*png), size, moments.timeline, moments.source};
}

std::vector<FileState> movieFiles(const ProjectBundle::Contents& project) {
    std::vector<FileState> files{FileState::of(project.recordingURL)};
    if (project.cameraURL) files.push_back(FileState::of(*project.cameraURL));
    return files;
}

} // namespace

void ProjectFrameReader::show(std::shared_ptr<const ProjectBundle::Contents> project) {
    const bool areMoviesSame = m_movies && movieFiles(*project) == m_movies->files;
    if (!areMoviesSame || project != m_project) m_film.reset();
    if (!areMoviesSame) m_movies.reset();
    m_project = std::move(project);
}

Result<const FilmMovies*, FrameError> ProjectFrameReader::movies() {
    if (!m_movies) {
        std::vector<FileState> files = movieFiles(*m_project);
        auto movies = FilmMovies::open(*m_project, m_readers, m_log);
        if (!movies) return failure(errorOf(movies.error()));
        m_movies.emplace(OpenMovies{std::move(files), std::move(*movies)});
    }
    return &m_movies->movies;
}

Result<ProjectFrameReader::OpenFilm*, FrameError> ProjectFrameReader::film() {
    const auto open = movies();
    if (!open) return failure(open.error());
    if (!m_film) {
        const MovieProperties& recording = (*open)->recording->properties();
        const VideoSettings usual = mp4Settings(recording.size, recording.nominalFrameRate, VideoQuality::High);
        auto film = makeFilm(*m_project, **open, {usual.size, usual.frameRate, FilmStyle::OfProject, LostEnd::Kept},
                             m_log);
        if (!film) return failure(errorOf(film.error()));
        Compositor compositor(film->instruction, Subsampling::None);
        m_film.emplace(OpenFilm{std::move(*film), std::move(compositor)});
    }
    return &*m_film;
}

Result<ProjectFrameReader::Frame, FrameError> ProjectFrameReader::read(double at, Clock clock, int maxLongEdge) {
    const auto open = movies();
    if (!open) return failure(open.error());
    MovieReader& recording = *(*open)->recording;
    const SourceTime end = recording.properties().end;
    const Seconds duration = std::max(end.sinceZero(), m_project->capture.originalDuration);
    const auto moments = momentsAt(at, clock, FragmentMap(edit().fragments), duration);
    if (!moments) return failure(moments.error());
    if (isLost(moments->source, recording.properties())) return cutOff(recording.properties());

    const auto frame = recording.frameAt(decodedMoment(moments->source, end));
    if (!frame) return decodeFailed(frame.error().description());
    return still(*frame->picture, *moments, maxLongEdge);
}

Result<ProjectFrameReader::Frame, FrameError> ProjectFrameReader::readRendered(EditTime at, int maxLongEdge) {
    const auto moments = momentsAt(at.value, Clock::Timeline, FragmentMap(edit().fragments), 0_s);
    if (!moments) return failure(moments.error());
    const auto open = film();
    if (!open) return failure(open.error());
    auto& [film, compositor] = **open;
    const MovieProperties& recording = m_movies->movies.recording->properties();
    if (isLost(moments->source, recording)) return cutOff(recording);

    const EditTime shown = film.frameTime(film.frameAt(*moments->timeline));
    const auto frames = framesAt(film, m_movies->movies, shown);
    if (!frames) return decodeFailed(frames.error().description());
    const ComposedFrame composed = compositor.compose(framePlan(*film.instruction, shown, frames->numbers()), *frames);
    return still(composed.picture, *moments, maxLongEdge);
}

} // namespace morvelin
