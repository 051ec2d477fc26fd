// Exports against FFmpeg's bare transcode of the same recording: decode and the same encoder, preset, bit rate and frame
// rate, nothing drawn. A whole project at "high", the worst film there is, and what a model reads of ten minutes. Both in
// turns in one run; medians.
//
//   bench-export PROJECT.morvelin [RUNS]      5 runs unless told
//   bench-export PROJECT.morvelin long        how time and memory grow with a film's length

#include <algorithm>
#include <cmath>
#include <cstdio>
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
#include "storage/ProjectBundle.h"

using namespace morvelin;
using bench::Cost;
using bench::measure;
using bench::median;
namespace fs = std::filesystem;

namespace {

/// A copy of the project in a folder that goes with the run: opening it may write to it.
class Workplace {
public:
    explicit Workplace(const fs::path& project) {
        fs::copy(project, bundle(), fs::copy_options::recursive);
        fs::permissions(bundle(), fs::perms::owner_all, fs::perm_options::add);
    }

    [[nodiscard]] fs::path bundle() const { return m_folder.path / "Sample.morvelin"; }
    [[nodiscard]] fs::path file(const char* name) const { return m_folder.path / name; }

private:
    bench::Folder m_folder;
};

/// The program's own export.
class Ours {
public:
    explicit Ours(const Workplace& place) : m_place(place) {}

    ProjectBundle::Contents open() { return bench::must(ProjectBundle::load(m_place.bundle(), {m_ids, m_clock, {}})); }
    UUID newID() { return m_ids.next(); }

    void run(const ProjectBundle::Contents& project, ExportRequest request) {
        request.output = m_place.file("ours.mp4");
        ExportEngine engine(
            {m_readers, m_soundReaders, m_writers, m_activity, m_ids, m_clock, {}, m_place.bundle(), ""});
        bench::must(engine.exportProject(project, request));
    }

private:
    const Workplace& m_place;
    RandomIdSource m_ids;
    SystemClock m_clock;
    ExportActivity m_activity;
    FFmpegMovieReaderFactory m_readers{{.threads = 1}};
    FFmpegSoundReaderFactory m_soundReaders{{}};
    FFmpegMovieWriterFactory m_writers;
};

/// The rival's command for the same film: the same length, size, rates and preset. `input` may loop the recording.
std::string bareTranscode(const Workplace& place, const std::string& input, const VideoSettings& settings,
                          Seconds length) {
    const PixelSize size = settings.size;
    return fmt::format("ffmpeg -v error -nostdin -y {} -t {} -an -vf fps={},scale={}:{} -c:v libx264 -preset superfast "
                       "-b:v {} -vsync cfr -movflags +faststart '{}'",
                       input, length.value, settings.frameRate, size.width, size.height, settings.bitRate,
                       place.file("bare.mp4").string());
}

MovieProperties propertiesOf(const fs::path& recording) {
    return bench::must(FFmpegMovieReaderFactory().open(recording))->properties();
}

/// The project's edit, shown again and again for so many minutes.
ProjectBundle::Contents repeated(ProjectBundle::Contents project, int minutes, Ours& ours) {
    EditPayload& edit = std::ranges::find(project.versions, project.currentVersionID, &ProjectVersion::id)->edit;
    const std::vector<VideoFragment> once = edit.fragments;
    const auto count = static_cast<int>(std::ceil(60.0 * minutes / edit.duration.value));
    edit.fragments.clear();
    for (int round = 0; round < count; ++round)
        for (VideoFragment fragment : once) {
            fragment.id = ours.newID();
            fragment.order = static_cast<std::int64_t>(edit.fragments.size());
            edit.fragments.push_back(fragment);
        }
    edit.duration = edit.duration * count;
    return project;
}

/// Full-screen motion under a camera that never rests.
ProjectBundle::Contents worstFilm(const Workplace& place, Ours& ours) {
    constexpr int kSeconds = 20;
    const fs::path recording = place.file("motion.mov");
    bench::run(
        fmt::format("ffmpeg -v error -y -f lavfi -i testsrc2=s=1920x1080:r=60:d={} -pix_fmt yuv420p -c:v libx264 "
                    "-preset superfast -g 60 -crf 20 '{}'",
                    kSeconds, recording.string()));
    ProjectBundle::Contents project;
    project.recordingURL = recording;
    project.versions.push_back({ours.newID(), "Version 1", false, {}, {}, {}});
    project.currentVersionID = project.versions[0].id;
    EditPayload& edit = project.versions[0].edit;
    edit.duration = Seconds(kSeconds);
    edit.fragments = {{ours.newID(), SourceTime(0), SourceTime(kSeconds), 1, 0, std::nullopt}};
    for (int i = 0; 2 * i < kSeconds; ++i)
        edit.zoomKeyframes.push_back(
            {ours.newID(), EditTime(2.0 * i), 2_s, i % 2 == 0 ? 1.75 : 1.0, ZoomTransitionType::Smooth, true});
    return project;
}

void report(const char* name, const std::vector<Cost>& costs, const fs::path& file) {
    fmt::print("{:<16}{:8.2f} s wall {:8.2f} s CPU {:8.1f} MB\n", name, median(costs, &Cost::wall),
               median(costs, &Cost::cpu), static_cast<double>(fs::file_size(file)) / 1e6);
}

/// Both sides in turns.
void compare(const char* name, double goal, int runs, const Workplace& place, const std::function<void()>& ours,
             const std::string& transcode) {
    std::vector<Cost> oursCosts;
    std::vector<Cost> bareCosts;
    for (int i = 0; i < runs; ++i) {
        oursCosts.push_back(measure(RUSAGE_SELF, ours));
        bareCosts.push_back(bench::run(transcode));
    }
    fmt::print("{}\n", name);
    report("export", oursCosts, place.file("ours.mp4"));
    report("bare transcode", bareCosts, place.file("bare.mp4"));
    fmt::print("ratio           {:8.2f} wall (goal {:g}) {:8.2f} CPU\n",
               median(oursCosts, &Cost::wall) / median(bareCosts, &Cost::wall), goal,
               median(oursCosts, &Cost::cpu) / median(bareCosts, &Cost::cpu));
    std::fflush(stdout);
}

void measureAll(const Workplace& place, int runs) {
    Ours ours(place);
    const ProjectBundle::Contents project = ours.open();
    const MovieProperties movie = propertiesOf(project.recordingURL);
    const VideoSettings high = mp4Settings(movie.size, movie.nominalFrameRate, VideoQuality::High);
    const std::string input = fmt::format("-i '{}'", project.recordingURL.string());
    // From opening the project to the finished file with its sidecar.
    compare(
        "desktop, high", 0.7, runs, place, [&] { ours.run(ours.open(), {}); },
        bareTranscode(place, input, high, project.currentVersion().edit.duration));

    const ProjectBundle::Contents worst = worstFilm(place, ours);
    const VideoSettings worstHigh = mp4Settings({1920, 1080}, 60, VideoQuality::High);
    compare(
        "full-screen motion under a restless camera, high", 1.15, runs, place, [&] { ours.run(worst, {}); },
        bareTranscode(place, fmt::format("-i '{}'", worst.recordingURL.string()), worstHigh,
                      worst.currentVersion().edit.duration));

    const ProjectBundle::Contents long10 = repeated(project, 10, ours);
    ExportRequest forAI;
    forAI.purpose = ExportPurpose::ForAI;
    compare(
        "for_ai of ten minutes", 1, std::min(runs, 3), place, [&] { ours.run(long10, forAI); },
        bareTranscode(place, "-stream_loop 10 " + input, forAISettings(movie.size, movie.nominalFrameRate),
                      long10.currentVersion().edit.duration));
}

/// Each length in a process of its own, which tells what it held at most.
void measureGrowth(const Workplace& place) {
    for (const int minutes : {5, 10, 20}) {
        const Cost cost = measure(RUSAGE_CHILDREN, [&] {
            const pid_t child = ::fork();
            if (child == 0) {
                Ours ours(place);
                ExportRequest request;
                request.quality = VideoQuality::VeryLow;
                ours.run(repeated(ours.open(), minutes, ours), request);
                rusage usage{};
                ::getrusage(RUSAGE_SELF, &usage);
                fmt::print("{:>3} minutes, very low: {:.0f} MiB", minutes, static_cast<double>(usage.ru_maxrss) / 1024);
                std::fflush(stdout);
                ::_exit(0);
            }
            int status = 0;
            if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0) bench::stop("an export failed");
        });
        fmt::print(", {:.1f} s\n", cost.wall);
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) bench::stop("usage: bench-export PROJECT.morvelin [RUNS | long]");
    const Workplace place(argv[1]);
    if (argc > 2 && std::string_view(argv[2]) == "long")
        measureGrowth(place);
    else
        measureAll(place, argc > 2 ? std::max(1, std::atoi(argv[2])) : 5);
}
