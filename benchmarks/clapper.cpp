// Sound against picture over a long take: a window flashes while a tone is played and another one said into a microphone
// whose clock runs 150 millionths fast; in the middle the take pauses. Prints, for each track, how far tones lie from
// their flashes. Starts its own X server and sound server.
//
//   bench-clapper [SECONDS]      default: 60

#include <cmath>
#include <thread>

#include <fmt/format.h>

#include "base/TemporaryFolder.h"
#include "capture/CaptureEngine.h"
#include "capture/LoopRunner.h"
#include "media/FFmpegMovieWriter.h"
#include "platform/linux/PulseAudioInputSource.h"
#include "platform/x11/X11ScreenSource.h"
#include "sound/MovieListener.h"
#include "sound/SoundServer.h"
#include "sound/Tones.h"
#include "x11/Desktop.h"
#include "x11/VirtualDisplay.h"

namespace {

using namespace morvelin;

constexpr PixelBox kScreen{0, 0, 640, 480};
constexpr double kMicrophoneDrift = 150e-6;
constexpr Seconds kBetweenClaps{4};
constexpr Seconds kPause{3};

/// Claps until the time is over; pauses once, halfway.
class Clapper {
public:
    Clapper(GLibEventLoop& loop, const std::string& display, const SoundServer& server)
        : m_loop(loop),
          m_desktop(display),
          m_window(m_desktop.openWindow(kScreen, 0)),
          m_player(server.name(), "speakers", 1000),
          m_speaker(server.deskPipe(), 1500, kMicrophoneDrift) {}

    void run(CaptureEngine& engine, Seconds length) {
        const HostTime start = m_loop.now();
        bool hasPaused = false;
        for (HostTime now = start; now - start < length; now = m_loop.now()) {
            clap(now + TonePlayer::kNotice);
            runFor(m_loop, kBetweenClaps - TonePlayer::kNotice);
            if (hasPaused || m_loop.now() - start < 0.5 * length) continue;
            hasPaused = true;
            engine.pause(m_loop.now());
            runFor(m_loop, kPause);
            engine.resume(m_loop.now());
        }
    }

private:
    void clap(HostTime moment) {
        m_player.playAt(moment);
        m_speaker.sayAt(moment);
        runUntil(m_loop, [&] { return m_loop.now() >= moment; });
        paint(0xffffff);
        runFor(m_loop, 0.2_s);
        paint(0);
    }
    void paint(std::uint32_t colour) {
        m_desktop.fill(m_window, kScreen, colour);
        m_desktop.settle();
    }

    GLibEventLoop& m_loop;
    Desktop m_desktop;
    xcb_window_t m_window;
    TonePlayer m_player;
    ToneSpeaker m_speaker;
};

struct Line {
    double start = 0;
    double end = 0;
};

/// The straight line through the offsets, at the first and at the last clap.
Line fittedLine(const std::vector<double>& times, const std::vector<double>& offsets) {
    double meanTime = 0;
    double meanOffset = 0;
    for (std::size_t i = 0; i < times.size(); ++i) {
        meanTime += times[i] / static_cast<double>(times.size());
        meanOffset += offsets[i] / static_cast<double>(times.size());
    }
    double spread = 0;
    double common = 0;
    for (std::size_t i = 0; i < times.size(); ++i) {
        spread += (times[i] - meanTime) * (times[i] - meanTime);
        common += (times[i] - meanTime) * (offsets[i] - meanOffset);
    }
    const double slope = spread > 0 ? common / spread : 0;
    return {meanOffset + slope * (times.front() - meanTime), meanOffset + slope * (times.back() - meanTime)};
}

void report(const char* name, const std::vector<double>& flashes, const std::vector<double>& tones) {
    if (tones.size() != flashes.size() || flashes.empty()) {
        fmt::print("{}: {} tones for {} flashes\n", name, tones.size(), flashes.size());
        return;
    }
    std::vector<double> offsets;
    for (std::size_t i = 0; i < flashes.size(); ++i) offsets.push_back((tones[i] - flashes[i]) * 1000);
    const auto [least, most] = std::ranges::minmax(offsets);
    const Line line = fittedLine(flashes, offsets);
    fmt::print("{}: {} claps, sound behind the picture by {:.1f} to {:.1f} ms, {:.2f} ms of drift over the run\n", name,
               offsets.size(), least, most, line.end - line.start);
}

int measure(Seconds length) {
    const TemporaryFolder folder;
    const VirtualDisplay display("640x480x24");
    const SoundServer server;
    if (display.name().empty() || server.name().empty()) {
        fmt::print(stderr, "clapper: Xvfb and pulseaudio must be installed\n");
        return 1;
    }
    GLibEventLoop loop;
    const SystemClock clock;
    const auto screen = std::move(X11ScreenSource::connect(display.name()).value());
    PulseAudioInputSource audioInput(clock, server.name());
    FFmpegMovieWriterFactory writers;
    CaptureEngine engine(loop, {*screen, audioInput, writers, clock, [](std::string_view) {}});
    engine.onNotice = [](const std::string& sentence) { fmt::print("told: {}\n", sentence); };
    Clapper clapper(loop, display.name(), server);
    const std::filesystem::path movie = folder.path() / "claps.mov";
    const SoundChoice sound{.systemAudio = true, .microphone = "desk"};
    const CaptureTarget target = DisplayTarget{};
    if (!runTask(loop, engine.startCapture(target, movie, sound))) return 1;
    clapper.run(engine, length);
    if (!runTask(loop, engine.stopCapture(loop.now()))) return 1;

    const auto flashes = flashesOf(movie);
    report("system audio", flashes, tonesOf(decodedSound(movie, 0)));
    report("microphone, 150 millionths fast", flashes, tonesOf(decodedSound(movie, 1)));
    return 0;
}

} // namespace

int main(int count, char** arguments) { return measure(Seconds(count > 1 ? std::stod(arguments[1]) : 60)); }
