// Export of a whole project at "high" against FFmpeg's bare transcode of its recording: decode and the same encoder,
// preset, bit rate and frame rate, nothing drawn. Both in turns in one run; medians.
//
//   bench-export PROJECT.morvelin [RUNS]

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

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

/// The program's own export, from opening the project to the finished file with its sidecar.
class Ours {
public:
    explicit Ours(const Workplace& place) : m_place(place) {}

    ProjectBundle::Contents open() { return bench::must(ProjectBundle::load(m_place.bundle(), {m_ids, m_clock, {}})); }

    void run() {
        ExportRequest request;
        request.output = m_place.file("ours.mp4");
        ExportEngine engine(
            {m_readers, m_soundReaders, m_writers, m_activity, m_ids, m_clock, {}, m_place.bundle(), ""});
        bench::must(engine.exportProject(open(), request));
    }

private:
    const Workplace& m_place;
    RandomIdSource m_ids;
    SystemClock m_clock;
    ExportActivity m_activity;
    FFmpegMovieReaderFactory m_readers;
    FFmpegSoundReaderFactory m_soundReaders{{}};
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
    const auto reader = bench::must(FFmpegMovieReaderFactory().open(recording));
    const MovieProperties& movie = reader->properties();
    return mp4Settings(movie.size, movie.nominalFrameRate, VideoQuality::High);
}

void report(const char* name, const std::vector<Cost>& costs, const fs::path& file) {
    fmt::print("{:<16}{:8.2f} s wall {:8.2f} s CPU {:8.1f} MB\n", name, median(costs, &Cost::wall),
               median(costs, &Cost::cpu), static_cast<double>(fs::file_size(file)) / 1e6);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) bench::stop("usage: bench-export PROJECT.morvelin [RUNS]");
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
        bareCosts.push_back(bench::run(transcode));
    }
    report("export", oursCosts, place.file("ours.mp4"));
    report("bare transcode", bareCosts, place.file("bare.mp4"));
    fmt::print("ratio           {:8.2f} wall   {:8.2f} CPU\n",
               median(oursCosts, &Cost::wall) / median(bareCosts, &Cost::wall),
               median(oursCosts, &Cost::cpu) / median(bareCosts, &Cost::cpu));
}
