// The whole picture against FFmpeg's own filters doing the simplest like of it: scale, round corners by a mask and
// overlay on a still background, and `zoompan` where the camera moves. On a desktop recording, which is still most of
// the time, and on full-screen motion. Composing alone is what the filters add to a bare decode, in processor time; with
// decoding and the same encoder it is time on the clock. First, the memory of an export of a 4K recording.
//
//   bench-filters PROJECT.morvelin

#include <cmath>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include <fmt/format.h>

#include "Cost.h"
#include "core/base/Date.h"
#include "media/FFmpegMovieReader.h"
#include "media/FFmpegMovieWriter.h"
#include "media/FFmpegSoundReader.h"
#include "render/ExportEngine.h"
#include "render/Film.h"
#include "render/ProjectFilm.h"

using namespace morvelin;
using bench::Cost;
using bench::must;
namespace fs = std::filesystem;

namespace {

constexpr double kLength = 10;
constexpr int kRuns = 3;
/// Where the desktop recording is busy: typing and scrolling.
constexpr double kBusyStart = 12;

enum class Motion { Still, Restless };

/// A stretch of a recording, as both sides render it.
struct Case {
    std::string name;
    fs::path recording;
    double start = 0;
    Motion camera = Motion::Still;
};

/// In and out again, without a rest.
std::vector<ZoomKeyframe> restless(IdSource& ids) {
    std::vector<ZoomKeyframe> keys;
    for (int i = 0; 2 * i < kLength; ++i)
        keys.push_back({ids.next(), EditTime(2.0 * i), 2_s, i % 2 == 0 ? 1.75 : 1.0, ZoomTransitionType::Smooth, true});
    return keys;
}

ProjectBundle::Contents projectOf(const Case& wanted, IdSource& ids) {
    ProjectBundle::Contents project;
    project.recordingURL = wanted.recording;
    project.versions.push_back({ids.next(), "Version 1", false, {}, {}, {}});
    project.currentVersionID = project.versions[0].id;
    EditPayload& edit = project.versions[0].edit;
    edit.duration = Seconds(kLength);
    edit.fragments = {{ids.next(), SourceTime(wanted.start), SourceTime(wanted.start + kLength), 1, 0, std::nullopt}};
    if (wanted.camera == Motion::Restless) edit.zoomKeyframes = restless(ids);
    return project;
}

class Exporter {
public:
    explicit Exporter(fs::path folder) : m_folder(std::move(folder)) {}

    void exportTo(const fs::path& file, const Case& wanted) {
        ExportRequest request;
        request.output = file;
        ExportEngine engine({m_readers, m_soundReaders, m_writers, m_activity, m_ids, m_clock, {}, m_folder, ""});
        must(engine.exportProject(projectOf(wanted, m_ids), request));
    }

    /// Processor seconds of composing alone, over all frames.
    double composing(const Case& wanted) {
        const ProjectBundle::Contents project = projectOf(wanted, m_ids);
        const Log log = [](std::string_view) {};
        const FilmMovies movies = must(FilmMovies::open(project, m_readers, log));
        const PixelSize size = movies.recording->properties().size;
        const Film film = must(makeFilm(project, movies, {.size = size, .frameRate = 60}, log));
        Compositor compositor(film.instruction, Subsampling::Quarter);
        double spent = 0;
        for (std::int64_t i = 0; i < film.frameCount(); ++i) {
            const EditTime t = film.frameTime(i);
            const ShownFrames frames = must(framesAt(film, movies, t));
            spent += threadSeconds(
                [&] { compositor.compose(framePlan(*film.instruction, t, frames.numbers()), frames); });
        }
        return spent;
    }

private:
    static double threadSeconds(const std::function<void()>& work) {
        const auto now = [] {
            timespec time{};
            clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
            return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
        };
        const double start = now();
        work();
        return now() - start;
    }

    fs::path m_folder;
    RandomIdSource m_ids;
    SystemClock m_clock;
    ExportActivity m_activity;
    FFmpegMovieReaderFactory m_readers{{.threads = 1}};
    FFmpegSoundReaderFactory m_soundReaders{{}};
    FFmpegMovieWriterFactory m_writers;
};

/// The rival. Its still pictures are read once and repeated in memory.
class Filters {
public:
    explicit Filters(const fs::path& folder) : m_folder(folder) {
        bench::run(fmt::format("ffmpeg -v error -y -f lavfi -i gradients=s=1920x1080:c0=0x30406080:c1=0xE0A070 "
                               "-frames:v 1 '{}'",
                               (folder / "background.png").string()));
        bench::run(
            fmt::format("ffmpeg -v error -y -f lavfi -i color=white:s=1728x972,format=gray,"
                        "\"geq=lum='255*lte(hypot(max(abs(X-W/2+0.5)-W/2+12,0),max(abs(Y-H/2+0.5)-H/2+12,0)),12)'\" "
                        "-frames:v 1 '{}'",
                        (folder / "mask.png").string()));
    }

    /// Processor seconds that the filters add to a decode.
    [[nodiscard]] double composing(const Case& wanted) const {
        const std::string null = "-f null -";
        const double with = bench::run(command(wanted, graph(wanted.camera), null)).cpu;
        return with - bench::run(command(wanted, "[0:v]null[out]", null)).cpu;
    }

    void exportTo(const fs::path& file, const Case& wanted, const VideoSettings& settings) const {
        bench::run(command(wanted, graph(wanted.camera),
                           fmt::format("-an -c:v libx264 -preset superfast -b:v {} -movflags +faststart '{}'",
                                       settings.bitRate, file.string())));
    }

private:
    [[nodiscard]] static std::string command(const Case& wanted, const std::string& graph, const std::string& output) {
        return fmt::format("ffmpeg -v error -nostdin -y -ss {} -t {} -i '{}' -filter_complex \"{}\" -map '[out]' -r 60 "
                           "-vsync cfr -t {} {}",
                           wanted.start, kLength, wanted.recording.string(), graph, kLength, output);
    }

    [[nodiscard]] std::string graph(Motion camera) const {
        const std::string stage = fmt::format(
            "movie='{}',format=yuv420p,loop=-1:1[bg];movie='{}',format=gray,loop=-1:1[mask];"
            "[0:v]fps=60,scale=1728:972[small];[small][mask]alphamerge[round];[bg][round]overlay=96:54:shortest=1",
            (m_folder / "background.png").string(), (m_folder / "mask.png").string());
        if (camera == Motion::Still) return stage + "[out]";
        return stage + ",zoompan=z='1.375-0.375*cos(2*PI*on/240)':x='iw/2-iw/zoom/2':y='ih/2-ih/zoom/2':d=1:"
                       "s=1920x1080:fps=60[out]";
    }

    fs::path m_folder;
};

void report(const std::string& name, double ours, double theirs, double goal) {
    fmt::print("{:<52}{:6.2f} of the filters (goal {:g}): {:.2f} against {:.2f} s\n", name, ours / theirs, goal, ours,
               theirs);
}

template <class Work>
double medianWall(Work&& work) {
    std::vector<Cost> costs;
    for (int i = 0; i < kRuns; ++i) costs.push_back(bench::measure(RUSAGE_SELF, work));
    return bench::median(costs, &Cost::wall);
}

fs::path motion(const fs::path& folder, const char* size, double length) {
    const fs::path file = folder / fmt::format("motion-{}.mov", size);
    bench::run(fmt::format("ffmpeg -v error -y -f lavfi -i testsrc2=s={}:r=60:d={} -pix_fmt yuv420p -c:v libx264 "
                           "-preset superfast -g 120 -crf 20 '{}'",
                           size, length, file.string()));
    return file;
}

/// Mebibytes that an export held at most, in a process of its own.
double exportMemory(const fs::path& folder, const Case& wanted) {
    const pid_t child = ::fork();
    if (child < 0) bench::stop("no process can be started");
    if (child == 0) {
        Exporter(folder).exportTo(folder / "4k.mp4", wanted);
        ::_exit(0);
    }
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    if (status != 0) bench::stop("the 4K export failed");
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 2) bench::stop("usage: bench-filters PROJECT");
    const bench::Folder place;
    // First of all, while this process is still small: a child begins with its parent's memory.
    const fs::path large = motion(place.path, "3840x2160", kLength);
    fmt::print("an export of 4K motion holds {:.0f} MiB (goal 600)\n",
               exportMemory(place.path, {"4K", large, 0, Motion::Restless}));

    const fs::path desktop = fs::path(arguments[1]) / "recording.mov";
    const fs::path moving = motion(place.path, "1920x1080", kLength);
    Exporter ours(place.path);
    const Filters filters(place.path);
    const VideoSettings settings = mp4Settings({1920, 1080}, 60, VideoQuality::High);
    for (const Case& wanted : {Case{"desktop, plateau", desktop, kBusyStart, Motion::Still},
                               {"desktop, restless camera", desktop, kBusyStart, Motion::Restless},
                               {"motion, restless camera", moving, 0, Motion::Restless}}) {
        report(wanted.name + ": composing alone", ours.composing(wanted), filters.composing(wanted), 0.25);
        const double mine = medianWall([&] { ours.exportTo(place.path / "ours.mp4", wanted); });
        const double rival = medianWall([&] { filters.exportTo(place.path / "theirs.mp4", wanted, settings); });
        report(wanted.name + ": with decoding and encoding", mine, rival, 0.77);
    }
}
