// A take of a virtual X server's desktop, and a look into the movie that it gives.
#pragma once

#include <cmath>

#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"
#include "capture/LoopRunner.h"
#include "capture/Take.h"
#include "media/FFmpegMovieReader.h"
#include "media/FFmpegMovieWriter.h"
#include "platform/null/NullAudioInputSource.h"
#include "platform/null/NullCameraSource.h"
#include "platform/x11/X11PointerSource.h"
#include "platform/x11/X11ScreenSource.h"
#include "x11/Desktop.h"
#include "x11/VirtualDisplay.h"

namespace morvelin {

inline constexpr PixelBox kScreen{0, 0, 640, 480};
inline constexpr std::uint32_t kRed = 0xff0000;
inline constexpr std::uint32_t kGreen = 0x00ff00;
inline constexpr std::uint32_t kBlue = 0x0000ff;

/// Luma of a colour in BT.709, limited range.
inline int lumaOf(std::uint32_t colour) {
    const double red = (colour >> 16 & 0xff) / 255.0;
    const double green = (colour >> 8 & 0xff) / 255.0;
    const double blue = (colour & 0xff) / 255.0;
    return static_cast<int>(std::lround(16 + 219 * (0.2126 * red + 0.7152 * green + 0.0722 * blue)));
}

/// The luma at a place, in fractions of the frame that shows at `time`; -1 when the movie can't be read.
inline int lumaAt(MovieReader& movie, SourceTime time, double x = 0.5, double y = 0.5) {
    const auto frame = movie.frameAt(time);
    if (!frame) return -1;
    const auto luma = std::as_const(*frame->picture).plane(0);
    return luma.row(static_cast<int>(luma.height * y))[static_cast<int>(luma.width * x)];
}

inline std::unique_ptr<MovieReader> openMovie(const std::filesystem::path& path) {
    FFmpegMovieReaderFactory factory;
    auto opened = factory.open(path);
    if (!opened) {
        ADD_FAILURE() << opened.error().description();
        return nullptr;
    }
    return std::move(*opened);
}

class TakeTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(display.name().empty()) << "Xvfb is missing";
        desktop.emplace(display.name());
        window = desktop->openWindow(kScreen, kRed);
        screen = std::move(X11ScreenSource::connect(display.name()).value());
        pointer = std::move(X11PointerSource::connect(display.name()).value());
    }

    void makeTake(const std::filesystem::path& projects, const CaptureTarget& target = DisplayTarget{}) {
        take.emplace(Take::Services{loop, *screen, *pointer, audioInput, cameras, writers, readers, ids, clock,
                                    [](std::string_view) {}, freeSpace},
                     Take::Options{.target = target, .projectsFolder = projects});
        take->onInterrupted = [this] { isInterrupted = true; };
        take->onNotice = [this](const std::string& sentence) { notices.push_back(sentence); };
    }
    void start(const std::filesystem::path& projects, const CaptureTarget& target = DisplayTarget{}) {
        makeTake(projects, target);
        const auto started = runTask(loop, take->start());
        ASSERT_TRUE(started) << started.error().description();
    }
    FinishedTake stop() {
        auto finished = runTask(loop, take->stop());
        if (finished) return std::move(*finished);
        ADD_FAILURE() << finished.error().description();
        return {};
    }
    void paint(std::uint32_t colour) {
        desktop->fill(window, kScreen, colour);
        desktop->settle();
    }
    ProjectBundle::Contents open(const std::filesystem::path& bundle) {
        return ProjectBundle::load(bundle, {ids, clock, [](std::string_view) {}}).value();
    }

    TemporaryFolder folder;
    VirtualDisplay display{"640x480x24"};
    std::optional<Desktop> desktop;
    xcb_window_t window = 0;
    GLibEventLoop loop;
    SystemClock clock;
    RandomIdSource ids;
    FFmpegMovieWriterFactory writers;
    FFmpegMovieReaderFactory readers;
    std::unique_ptr<ScreenSource> screen;
    std::unique_ptr<PointerSource> pointer;
    NullAudioInputSource audioInput{{}};
    NullCameraSource cameras;
    std::optional<Take> take;
    FreeSpace freeSpace = freeSpaceOfDisk;
    bool isInterrupted = false;
    std::vector<std::string> notices;
};

} // namespace morvelin
