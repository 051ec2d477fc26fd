// Export of a whole project at "high" against FFmpeg's bare transcode of its recording: decode and the same encoder,
// preset, bit rate and frame rate, nothing drawn. Both in turns in one run; medians.
//
//   bench-export PROJECT.morvelin [RUNS]

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <sys/resource.h>

#include <fmt/format.h>

#include "core/base/Date.h"
#include "media/FFmpegMovieReader.h"
#include "media/FFmpegMovieWriter.h"
#include "render/ExportEngine.h"
#include "storage/ProjectBundle.h"

using namespace morvelin;
namespace fs = std::filesystem;

namespace {

/// What one run took: time on the clock, and of the processors.
struct Cost {
    double wall = 0;
    double cpu = 0;
};

double cpuSeconds(int who) {
    rusage usage{};
    ::getrusage(who, &usage);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

Cost measure(int who, const std::function<void()>& work) {
    const double cpu = cpuSeconds(who);
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    return {wall.count(), cpuSeconds(who) - cpu};
}

double median(std::vector<Cost> costs, double Cost::*part) {
    std::ranges::sort(costs, {}, part);
    return costs[costs.size() / 2].*part;
}

[[noreturn]] void fail(const std::string& sentence) {
    fmt::print(stderr, "{}\n", sentence);
    std::exit(1);
}

/// A copy of the project in a folder that goes with the run: opening it may write to it.
class Workplace {
public:
    explicit Workplace(const fs::path& project) {
        std::string name = (fs::temp_directory_path() / "morvelin-bench-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) fail("No temporary folder could be made.");
        m_folder = name;
        fs::copy(project, bundle(), fs::copy_options::recursive);
        fs::permissions(bundle(), fs::perms::owner_all, fs::perm_options::add);
    }
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;
    ~Workplace() { fs::remove_all(m_folder); }

    [[nodiscard]] fs::path bundle() const { return m_folder / "Sample.morvelin"; }
    [[nodiscard]] fs::path file(const char* name) const { return m_folder / name; }

private:
    fs::path m_folder;
};

/// The program's own export, from opening the project to the finished file with its sidecar.
class Ours {
public:
    explicit Ours(const Workplace& place) : m_place(place) {}

    ProjectBundle::Contents open() {
        auto project = ProjectBundle::load(m_place.bundle(), {m_ids, m_clock, {}});
        if (!project) fail(project.error().description());
        return std::move(*project);
    }

    void run() {
        ExportRequest request;
        request.output = m_place.file("ours.mp4");
        ExportEngine engine({m_readers, m_writers, m_activity, m_ids, m_clock, {}, m_place.bundle(), ""});
        if (const auto files = engine.exportProject(open(), request); !files) fail(files.error().description());
    }

private:
    const Workplace& m_place;
    RandomIdSource m_ids;
    SystemClock m_clock;
    ExportActivity m_activity;
    FFmpegMovieReaderFactory m_readers;
    FFmpegMovieWriterFactory m_writers;
};

/// The rival's command for the same film: the same length, size, rates and preset.
std::string bareTranscode(const Workplace& place, const VideoSettings& settings, Seconds length) {
    return fmt::format("ffmpeg -v error -nostdin -y -t {} -i '{}' -an -c:v libx264 -preset superfast -b:v {} -r {} "
                       "-vsync cfr -movflags +faststart '{}'",
                       length.value, place.file("Sample.morvelin/recording.mov").string(), settings.bitRate,
                       settings.frameRate, place.file("bare.mp4").string());
}

VideoSettings settingsOf(const fs::path& recording) {
    auto reader = FFmpegMovieReaderFactory().open(recording);
    if (!reader) fail(reader.error().description());
    const MovieProperties& movie = (*reader)->properties();
    return mp4Settings(movie.size, movie.nominalFrameRate, VideoQuality::High);
}

void report(const char* name, const std::vector<Cost>& costs, const fs::path& file) {
    fmt::print("{:<16}{:8.2f} s wall {:8.2f} s CPU {:8.1f} MB\n", name, median(costs, &Cost::wall),
               median(costs, &Cost::cpu), static_cast<double>(fs::file_size(file)) / 1e6);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) fail("usage: bench-export PROJECT.morvelin [RUNS]");
    const Workplace place(argv[1]);
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;

    Ours ours(place);
    const ProjectBundle::Contents project = ours.open();
    const VideoSettings settings = settingsOf(project.recordingURL);
    const std::string transcode = bareTranscode(place, settings, project.currentVersion().edit.duration);
    fmt::print("{} × {}, {} frames a second, {} bits a second, {:.1f} s\n", settings.size.width, settings.size.height,
               settings.frameRate, settings.bitRate, project.currentVersion().edit.duration.value);

    std::vector<Cost> oursCosts;
    std::vector<Cost> bareCosts;
    for (int i = 0; i < runs; ++i) {
        oursCosts.push_back(measure(RUSAGE_SELF, [&] { ours.run(); }));
        bareCosts.push_back(measure(RUSAGE_CHILDREN, [&] {
            if (std::system(transcode.c_str()) != 0) fail("ffmpeg failed");
        }));
    }
    report("export", oursCosts, place.file("ours.mp4"));
    report("bare transcode", bareCosts, place.file("bare.mp4"));
    fmt::print("ratio           {:8.2f} wall   {:8.2f} CPU\n",
               median(oursCosts, &Cost::wall) / median(bareCosts, &Cost::wall),
               median(oursCosts, &Cost::cpu) / median(bareCosts, &Cost::cpu));
}
