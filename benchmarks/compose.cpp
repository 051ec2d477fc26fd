// Composing frames alone, one thread, decoding not counted: the rival is a copy of one 4:2:0 frame of the same size.
// On the recording of a project given as argument. One line a case: medians over the frames of one run.

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <functional>
#include <numbers>
#include <thread>

#include <fmt/format.h>

#include "core/base/Files.h"
#include "media/FFmpegMovieReader.h"
#include "render/Compositor.h"
#include "render/CursorScene.h"
#include "render/FilmInstruction.h"
#include "storage/CursorTrackFile.h"
#include "storage/ProjectBundle.h"

namespace {

using namespace morvelin;
namespace fs = std::filesystem;

constexpr double kFrameRate = 60;
constexpr int kFrames = 240;
/// Where the recording is busy: typing and scrolling.
constexpr double kBusyStart = 12;

[[noreturn]] void stop(const std::string& why) {
    fmt::print(stderr, "compose: {}\n", why);
    std::exit(1);
}

template <class Outcome>
auto must(Outcome outcome) {
    if (!outcome) stop(outcome.error().description());
    return std::move(*outcome);
}

/// Of the processor, so that what else the machine does counts for little.
double milliseconds(const std::function<void()>& work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
    };
    const double start = now();
    work();
    return now() - start;
}

struct Distribution {
    double median = 0;
    double mean = 0;
};

Distribution distribution(std::vector<double> times) {
    double sum = 0;
    for (const double time : times) sum += time;
    std::ranges::sort(times);
    return {times[times.size() / 2], sum / static_cast<double>(times.size())};
}

/// Each frame another one, as they come from a decoder.
Distribution copying(const std::vector<MovieFrame>& frames) {
    Picture copy(frames.front().picture->size(), frames.front().picture->subsampling());
    std::vector<double> times;
    for (int i = 0; i < kFrames; ++i) {
        const Picture& picture = *frames[static_cast<std::size_t>(i) % frames.size()].picture;
        times.push_back(milliseconds([&] {
            for (int p = 0; p < 3; ++p)
                std::memcpy(copy.plane(p).data, picture.plane(p).data,
                            static_cast<std::size_t>(picture.plane(p).stride * picture.plane(p).height));
        }));
    }
    return distribution(times);
}

/// Frames and their plans, all made before the clock starts but for the plans, which count.
struct Scene {
    std::shared_ptr<const CompositionInstruction> instruction;
    std::function<EditTime(int)> time;
    std::function<const MovieFrame&(int)> frame;
};

Distribution composing(const Scene& scene) {
    Compositor compositor(scene.instruction, Subsampling::Quarter);
    std::vector<double> times;
    for (int i = -2; i < kFrames; ++i) {
        const MovieFrame& frame = scene.frame(std::max(i, 0));
        const double spent = milliseconds([&] {
            const FramePlan plan = framePlan(*scene.instruction, scene.time(std::max(i, 0)), {frame.number});
            compositor.compose(plan, {frame, std::nullopt});
        });
        if (i >= 0) times.push_back(spent);
    }
    return distribution(times);
}

double wallSeconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// How many times as fast two threads compose two films as one thread does.
double scalingOfTwoThreads(const Scene& scene) {
    const double alone = wallSeconds([&] {
        composing(scene);
        composing(scene);
    });
    const double together = wallSeconds([&] {
        const std::jthread first([&] { composing(scene); });
        const std::jthread second([&] { composing(scene); });
    });
    return alone / together;
}

/// A camera that holds still at a zoom.
std::vector<DenseZoomFrame> still(double zoom) { return {{EditTime(0), zoom, 0.4, 0.45}}; }

/// A camera that never rests: in and out between `low` and `high`, once in four seconds.
std::vector<DenseZoomFrame> restless(double low, double high) {
    std::vector<DenseZoomFrame> frames;
    for (int tenth = 0; tenth < 1200; ++tenth) {
        const double t = tenth / 10.0;
        const double phase = (1 - std::cos(t * std::numbers::pi / 2)) / 2;
        frames.push_back({EditTime(t), low + (high - low) * phase, 0.4 + 0.1 * phase, 0.45 - 0.05 * phase});
    }
    return frames;
}

/// A pointer that never rests.
std::vector<CursorEvent> circling() {
    std::vector<CursorEvent> events;
    for (int sample = 0; sample < 120 * 30; ++sample) {
        const double t = sample / 30.0;
        CursorEvent event;
        event.timestamp = SourceTime(t);
        event.x = 0.5 + 0.3 * std::cos(1.7 * t);
        event.y = 0.5 + 0.3 * std::sin(2.3 * t);
        events.push_back(event);
    }
    return events;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 2) stop("usage: bench-compose PROJECT");
    const fs::path project = arguments[1];
    FFmpegMovieReaderFactory factory;
    const auto reader = must(factory.open(project / "recording.mov"));
    const PixelSize size = reader->properties().size;

    std::vector<MovieFrame> busy;
    for (int i = 0; i < kFrames; ++i) {
        MovieFrame frame = must(reader->frameAt(SourceTime(kBusyStart + i / kFrameRate)));
        if (busy.empty() || busy.back().number != frame.number) busy.push_back(std::move(frame));
    }
    const auto busyFrameAt = [&](int i) -> const MovieFrame& {
        const SourceTime t(kBusyStart + i / kFrameRate);
        for (const MovieFrame& frame : busy)
            if (t < frame.end) return frame;
        return busy.back();
    };

    SeededIdSource ids(1);
    const auto take = must(ProjectBundle::decodeCursorEvents(must(readFile(project / "cursorEvents.json"))));
    const auto shapes = CursorShapeLibrary::load(project);
    const EditPayload edit = ProjectBundle::initialEdit(take, reader->properties().end.sinceZero(), ids);
    const auto instruction = [&](std::vector<DenseZoomFrame> camera, const std::vector<CursorEvent>& pointer) {
        auto made = std::make_shared<CompositionInstruction>(
            *makeInstruction({edit, take, shapes, size, size, FilmStyle::OfProject, {}, nullptr}));
        made->denseFrames = std::move(camera);
        if (shapes) made->cursorScene = std::make_shared<const CursorScene>(CursorScene::make(pointer, shapes, {}));
        return made;
    };
    const auto running = [](int i) { return EditTime(kBusyStart + i / kFrameRate); };
    const auto first = [&](int) -> const MovieFrame& { return busy.front(); };
    const std::vector<CursorEvent> circle = circling();

    const double copy = copying(busy).median;
    fmt::print("copy of one {} × {} frame: {:.3f} ms\n", size.width, size.height, copy);
    const auto report = [&](const char* name, const Scene& scene, double goal) {
        const Distribution spent = composing(scene);
        fmt::print("{:<58}{:7.2f} of a copy (goal {:g}): {:.3f} ms, mean {:.3f}\n", name, spent.median / copy, goal,
                   spent.median, spent.mean);
    };
    report("nothing changes", {instruction(still(1.75), take), [](int) { return EditTime(1); }, first}, 0.2);
    report("plateau at 1, moving pointer", {instruction(still(1), circle), running, first}, 4);
    report("plateau at 1.75, moving pointer", {instruction(still(1.75), circle), running, first}, 4);
    report("plateau at 1, moving pointer, busy screen", {instruction(still(1), circle), running, busyFrameAt}, 4);
    report("plateau at 1.75, moving pointer, busy screen", {instruction(still(1.75), circle), running, busyFrameAt}, 4);
    report("ramp between 1 and 1.75", {instruction(restless(1, 1.75), circle), running, busyFrameAt}, 15);
    report("ramp between 1.75 and 3", {instruction(restless(1.75, 3), circle), running, busyFrameAt}, 15);
    fmt::print("two threads compose {:.2f} times as fast as one (goal 1.8)\n",
               scalingOfTwoThreads({instruction(restless(1, 1.75), circle), running, busyFrameAt}));
}
