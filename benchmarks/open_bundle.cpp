// Opening a project of an hour, 108,000 pointer samples, and generating its timeline; the rival is nlohmann-json, which
// parses the pointer's file alone into its tree. One line, medians of one run.

#include <fstream>

#include <malloc.h>

#include <nlohmann/json.hpp>

#include "AnHour.h"

namespace {

using namespace morvelin;
using namespace morvelin::bench;
namespace fs = std::filesystem;

constexpr int kRuns = 9;
constexpr int kClickInterval = 300; // ten seconds

/// Kilobytes from a line of /proc/self/status, e.g. "VmHWM:".
long memory(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (long kilobytes = 0; word == name && status >> kilobytes) return kilobytes;
    return 0;
}

struct Measured {
    double milliseconds; ///< median
    double megabytes;    ///< the most memory over what was in use before, of the first run
};

template <class Work>
Measured measure(Work&& work) {
    ::malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5; // begins the high-water mark anew
    const long before = memory("VmRSS:");
    double megabytes = 0;
    bool isFirst = true;
    const double milliseconds = medianMilliseconds(kRuns, [&] {
        work();
        if (std::exchange(isFirst, false)) megabytes = static_cast<double>(memory("VmHWM:") - before) / 1024;
    });
    return {milliseconds, megabytes};
}

} // namespace

int main() {
    const Folder folder;
    SeededIdSource ids(1);
    const SystemClock clock;
    const ProjectBundle::Services services{ids, clock, [](std::string_view line) { stop(std::string(line)); }};

    const auto events = pointerOfAnHour(kClickInterval);
    writeAnHour(folder.path, events);
    const auto writing = measure([&] { must(ProjectBundle::writeCursorEvents(events, folder.path)); });

    const auto first = measure([&] {
        fs::remove_all(folder.path / "versions");
        must(ProjectBundle::load(folder.path, services));
    });
    std::size_t zooms = 0;
    const auto ours = measure([&] {
        const auto contents = must(ProjectBundle::load(folder.path, services));
        zooms = ProjectBundle::initialEdit(contents.cursorEvents, kHour, ids).zoomKeyframes.size();
    });
    if (zooms < 100) stop("the timeline wasn't generated");
    const std::string text = must(readFile(folder.path / "cursorEvents.json"));
    const auto rival = measure([&] {
        if (nlohmann::json::parse(text).size() != kSamples) stop("the rival read something else");
    });

    fmt::print(
        "open + timeline {:.2f} of nlohmann's parse: {:.1f} ms against {:.1f} ms; memory {:.0f} MB against {:.0f} "
        "MB; {:.1f} MB of JSON, {} samples, {} zooms (first opening, which writes and syncs two versions and the "
        "index: {:.1f} ms; writing the track: {:.1f} ms)\n",
        ours.milliseconds / rival.milliseconds, ours.milliseconds, rival.milliseconds, ours.megabytes, rival.megabytes,
        static_cast<double>(text.size()) / 1e6, kSamples, zooms, first.milliseconds, writing.milliseconds);
}
