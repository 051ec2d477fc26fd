// A GIF of a project's first ten seconds at "high", decoding and composing included, against FFmpeg's own palette road
// over the same film, already composed. Both in turns in one run; medians.
//
//   bench-gif PROJECT.morvelin [RUNS]

#include <fstream>

#include <fmt/format.h>

#include "Cost.h"
#include "core/base/Date.h"
#include "media/FFmpegMovieReader.h"
#include "render/FilmRenderer.h"
#include "render/GIFExport.h"
#include "render/ProjectFilm.h"

using namespace morvelin;
using bench::Cost;
using bench::median;
namespace fs = std::filesystem;

namespace {

constexpr Seconds kLength{10};

/// The beginning of the project's film, as an export makes it.
class Beginning {
public:
    Beginning(const fs::path& project, const fs::path& folder) {
        const fs::path bundle = folder / "Sample.morvelin";
        fs::copy(project, bundle, fs::copy_options::recursive);
        fs::permissions(bundle, fs::perms::owner_all, fs::perm_options::add);
        RandomIdSource ids;
        const SystemClock clock;
        m_project = bench::must(ProjectBundle::load(bundle, {ids, clock, {}}));
        for (ProjectVersion& version : m_project.versions)
            version.edit.fragments = {VideoFragment::whole(kLength, ids)};
    }

    void writeGIF(const fs::path& file) {
        const auto movies = bench::must(FilmMovies::open(m_project, m_readers, m_log));
        const Film film = filmOf(movies);
        const FilmReaders readers{*movies.recording, movies.camera.get(), m_log};
        bench::must(morvelin::writeGIF({film, readers, frameCount(film), file, file}, {}, {}));
    }

    /// The composed frames as they are, in a form that costs FFmpeg next to nothing to read.
    void writeFrames(const fs::path& file) {
        const auto movies = bench::must(FilmMovies::open(m_project, m_readers, m_log));
        const Film film = filmOf(movies);
        const PixelSize size = film.instruction->outputSize;
        std::ofstream stream(file, std::ios::binary);
        stream << fmt::format("YUV4MPEG2 W{} H{} F{}:1 Ip C444\n", size.width, size.height, film.frameRate);
        Compositor compositor(film.instruction, Subsampling::None);
        const auto write = [&](std::int64_t, const ComposedFrame& frame) -> Result<void, ExportError> {
            stream << "FRAME\n";
            for (int index = 0; index < 3; ++index)
                for (int y = 0; y < size.height; ++y)
                    stream.write(reinterpret_cast<const char*>(frame.picture.plane(index).row(y)), size.width);
            return {};
        };
        bench::must(renderPart(film, {0, frameCount(film)}, {*movies.recording, movies.camera.get(), m_log}, compositor,
                               write, {}));
    }

private:
    [[nodiscard]] Film filmOf(const FilmMovies& movies) const {
        const VideoSettings settings = gifSettings(movies.recording->properties().size, VideoQuality::High);
        return bench::must(makeFilm(m_project, movies, {settings.size, settings.frameRate}, m_log));
    }
    static std::int64_t frameCount(const Film& film) {
        return gifFrameCount(film.composition.timelineDuration(), film.frameRate);
    }

    FFmpegMovieReaderFactory m_readers;
    ProjectBundle::Contents m_project;
    Log m_log = [](std::string_view) {};
};

void report(const char* name, const std::vector<Cost>& costs, const fs::path& file) {
    fmt::print("{:<20}{:8.2f} s wall {:8.2f} s CPU {:8.2f} MB\n", name, median(costs, &Cost::wall),
               median(costs, &Cost::cpu), static_cast<double>(fs::file_size(file)) / 1e6);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) bench::stop("usage: bench-gif PROJECT.morvelin [RUNS]");
    const bench::Folder folder;
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;
    const fs::path ours = folder.path / "ours.gif";
    const fs::path theirs = folder.path / "theirs.gif";
    const fs::path frames = folder.path / "frames.y4m";
    Beginning film(argv[1], folder.path);
    film.writeFrames(frames);
    const std::string paletteRoad = fmt::format(
        "ffmpeg -v error -nostdin -y -i '{}' -filter_complex 'split[a][b];[a]palettegen[p];[b][p]paletteuse' '{}'",
        frames.string(), theirs.string());

    std::vector<Cost> oursCosts;
    std::vector<Cost> theirCosts;
    for (int i = 0; i < runs; ++i) {
        oursCosts.push_back(bench::measure(RUSAGE_SELF, [&] { film.writeGIF(ours); }));
        theirCosts.push_back(bench::run(paletteRoad));
    }
    report("project to GIF", oursCosts, ours);
    report("palette road alone", theirCosts, theirs);
    fmt::print("ratio               {:8.2f} wall   {:8.2f} CPU   {:8.2f} size\n",
               median(oursCosts, &Cost::wall) / median(theirCosts, &Cost::wall),
               median(oursCosts, &Cost::cpu) / median(theirCosts, &Cost::cpu),
               static_cast<double>(fs::file_size(ours)) / static_cast<double>(fs::file_size(theirs)));
}
