// Opening a project of an hour, 108,000 pointer samples, and generating its timeline; the rival is nlohmann-json, which
// parses the pointer's file alone into its tree. One line, medians of one run.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include <malloc.h>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "storage/ProjectBundle.h"

namespace {

using namespace morvelin;
namespace fs = std::filesystem;

constexpr int kSamples = 108'000;
constexpr double kSamplesPerSecond = 30;
constexpr Seconds kDuration{kSamples / kSamplesPerSecond};
constexpr int kRuns = 9;

/// An hour of a pointer that walks about a 1920 × 1080 desktop, pauses, and clicks every ten seconds.
std::vector<CursorEvent> anHour() {
    std::mt19937 random(1);
    std::normal_distribution<double> step(0, 12);
    std::vector<CursorEvent> events(kSamples);
    double x = 960, y = 540;
    for (int i = 0; i < kSamples; ++i) {
        CursorEvent& sample = events[static_cast<std::size_t>(i)];
        if (i / 90 % 3 != 0) {
            x = std::clamp(x + step(random), 0.0, 1919.0);
            y = std::clamp(y + step(random), 0.0, 1079.0);
        }
        sample.timestamp = SourceTime(i / kSamplesPerSecond);
        sample.x = std::floor(x) / 1920;
        sample.y = std::floor(y) / 1080;
        if (i % 300 < 2) {
            sample.event = i % 300 == 0 ? CursorEventType::MouseDown : CursorEventType::MouseUp;
            sample.button = MouseButton::Left;
            sample.clickCount = 1;
        }
    }
    return events;
}

struct Folder {
    fs::path path = makePath();
    ~Folder() { fs::remove_all(path); }

private:
    static fs::path makePath() {
        std::string name = (fs::temp_directory_path() / "morvelin-bench-XXXXXX").string();
        const char* made = ::mkdtemp(name.data());
        return made ? made : ".";
    }
};

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
    std::vector<double> times;
    for (int run = 0; run < kRuns; ++run) {
        const auto start = std::chrono::steady_clock::now();
        work();
        times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
        if (run == 0) megabytes = static_cast<double>(memory("VmHWM:") - before) / 1024;
    }
    std::ranges::sort(times);
    return {times[times.size() / 2], megabytes};
}

[[noreturn]] void stop(const std::string& why) {
    fmt::print(stderr, "open_bundle: {}\n", why);
    std::exit(1);
}

template <class Outcome>
auto must(Outcome outcome) {
    if (!outcome) stop(outcome.error().description());
    if constexpr (!std::is_void_v<typename Outcome::Value>) return std::move(*outcome);
}

} // namespace

int main() {
    const Folder folder;
    SeededIdSource ids(1);
    const SystemClock clock;
    const ProjectBundle::Services services{ids, clock, [](std::string_view line) { stop(std::string(line)); }};

    std::ofstream(folder.path / "recording.mov") << "movie";
    ProjectBundle::Capture capture;
    capture.name = "An hour";
    capture.originalDuration = kDuration;
    must(ProjectBundle::writeCapture(capture, folder.path));
    const auto writing = measure(
        [events = anHour(), &folder] { must(ProjectBundle::writeCursorEvents(events, folder.path)); });

    const auto first = measure([&] {
        fs::remove_all(folder.path / "versions");
        must(ProjectBundle::load(folder.path, services));
    });
    std::size_t zooms = 0;
    const auto ours = measure([&] {
        const auto contents = must(ProjectBundle::load(folder.path, services));
        zooms = ProjectBundle::initialEdit(contents.cursorEvents, kDuration, ids).zoomKeyframes.size();
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
