// Takes of a real screen with the sound of a real sound server, decoded again: a clapper is seen and heard at once.

#include <cmath>

#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"
#include "capture/LoopRunner.h"
#include "capture/Take.h"
#include "media/FFmpegMovieWriter.h"
#include "platform/linux/PulseAudioInputSource.h"
#include "platform/null/NullPointerSource.h"
#include "platform/null/PatternCameraSource.h"
#include "platform/x11/X11ScreenSource.h"
#include "sound/MovieListener.h"
#include "sound/SoundServer.h"
#include "sound/Tones.h"
#include "x11/Desktop.h"
#include "x11/VirtualDisplay.h"

namespace morvelin {

namespace {

constexpr PixelBox kScreen{0, 0, 320, 240};

/// How far a flash may lie from its tone, in seconds.
#ifdef __SANITIZE_THREAD__
constexpr double kInStep = 0.06; // the picture is fetched some frames late
#else
constexpr double kInStep = 0.025;
#endif

class TakeWithSoundTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(display.name().empty()) << "Xvfb is missing";
        ASSERT_FALSE(server.name().empty()) << "pulseaudio is missing";
        desktop.emplace(display.name());
        window = desktop->openWindow(kScreen, 0);
        screen = std::move(X11ScreenSource::connect(display.name()).value());
        sink = "speakers";
        player.emplace(server.name(), sink, 1000);
    }

    Result<void, TakeError> start(bool systemAudio, std::optional<std::string> microphone,
                                  std::optional<std::string> camera = {}) {
        take.emplace(Take::Services{loop, *screen, pointer, audioInput, cameras, writers, readers, ids, clock,
                                    [](std::string_view) {}},
                     Take::Options{.target = DisplayTarget{},
                                   .projectsFolder = folder.path(),
                                   .systemAudio = systemAudio,
                                   .microphone = std::move(microphone),
                                   .camera = std::move(camera)});
        take->onNotice = [this](const std::string& sentence) { told.push_back(sentence); };
        return runTask(loop, take->start());
    }
    /// Gives the project's movie.
    std::filesystem::path stop() {
        const auto finished = runTask(loop, take->stop());
        if (!finished) {
            ADD_FAILURE() << finished.error().description();
            return {};
        }
        duration = finished->duration;
        return finished->bundleURL / "recording.mov";
    }

    /// When a clap was heard, and by how much its flash came later, as it may on a busy machine.
    struct Clap {
        HostTime moment;
        Seconds lateness;
    };
    /// A flash with a tone from the output and another one at the desk.
    Clap clap() {
        const HostTime moment = clock.uptime() + TonePlayer::kNotice;
        player->playAt(moment);
        speaker.sayAt(moment);
        runUntil(loop, [&] { return clock.uptime() >= moment; });
        paint(0xffffff);
        const Seconds late = clock.uptime() - moment;
        runFor(loop, 0.15_s);
        paint(0);
        return {moment, late};
    }
    void claps(int count) {
        for (int clapped = 0; clapped < count; ++clapped) kept.push_back(clap());
    }
    /// Every flash has its tone, and no tone has no flash.
    void expectInStep(const std::vector<double>& flashes, const std::vector<double>& tones, const char* track) {
        ASSERT_EQ(flashes.size(), kept.size()) << track;
        ASSERT_EQ(tones.size(), flashes.size()) << track;
        for (std::size_t clap = 0; clap < flashes.size(); ++clap)
            EXPECT_NEAR(tones[clap], flashes[clap] - kept[clap].lateness.value, kInStep) << track << ", clap " << clap;
    }
    void paint(std::uint32_t colour) {
        desktop->fill(window, kScreen, colour);
        desktop->settle();
    }
    bool wasTold(const std::string& sentence) {
        return runUntil(
            loop, [&] { return std::ranges::count(told, sentence) > 0; }, 8_s);
    }

    TemporaryFolder folder;
    VirtualDisplay display{"320x240x24"};
    SoundServer server;
    std::optional<Desktop> desktop;
    xcb_window_t window = 0;
    std::string sink;
    std::optional<TonePlayer> player;
    ToneSpeaker speaker{server.deskPipe(), 1500};
    GLibEventLoop loop;
    SystemClock clock;
    RandomIdSource ids;
    std::unique_ptr<ScreenSource> screen;
    NullPointerSource pointer;
    PulseAudioInputSource audioInput{clock, server.name()};
    PatternCameraSource cameras;
    FFmpegMovieWriterFactory writers;
    FFmpegMovieReaderFactory readers;
    std::optional<Take> take;
    std::vector<Clap> kept; ///< those that are in no pause
    std::vector<std::string> told;
    Seconds duration;
};

} // namespace

TEST_F(TakeWithSoundTest, IsSeenAndHeardAtOnceThroughPausesAndChangesOfDevices) {
    ASSERT_TRUE(start(true, "", ""));
    claps(3);
    take->pause();
    const HostTime pausedAt = clock.uptime();
    runFor(loop, 0.4_s);
    (void)clap();
    runFor(loop, 0.3_s);
    take->resume();
    const Seconds pause = clock.uptime() - pausedAt;
    claps(2);
    take->pause();
    runFor(loop, 0.123_s);
    take->resume();
    claps(1);
    server.control("set-default-sink headphones");
    player.emplace(server.name(), "headphones", 1000);
    runFor(loop, 0.5_s);
    claps(2);
    const auto movie = stop();

    EXPECT_TRUE(told.empty());
    const auto flashes = flashesOf(movie);
    EXPECT_EQ(flashes.size(), 8U) << "the clap in the pause is cut";
    for (const int track : {0, 1}) {
        const auto sound = decodedSound(movie, track);
        EXPECT_NEAR(static_cast<double>(sound.size()) / kSoundRate, duration.value, 0.03);
        expectInStep(flashes, tonesOf(sound), track == 0 ? "system audio" : "microphone");
    }

    // The camera flashes with each second of the clock.
    const auto project = ProjectBundle::load(movie.parent_path(), {ids, clock, [](std::string_view) {}}).value();
    ASSERT_TRUE(project.cameraURL && project.currentVersion().edit.camera);
    const auto camera = std::move(readers.open(*project.cameraURL).value());
    EXPECT_NEAR(camera->properties().end.value, (duration - project.currentVersion().edit.camera->startOffset).value,
                0.05);
    const auto seconds = flashesOf(*project.cameraURL);
    ASSERT_GE(seconds.size(), 4U);
    const HostTime start = kept[0].moment + kept[0].lateness - Seconds(flashes[0]);
    for (const double second : seconds) {
        HostTime seen = start + project.currentVersion().edit.camera->startOffset + Seconds(second);
        // The movie may begin within a flash, and the pause may end within one.
        if (second == 0 || std::abs((seen - pausedAt).value) < 0.05) continue;
        if (seen > pausedAt) seen += pause;
        if (seen > pausedAt + pause + 1_s) continue; // the second pause is not reckoned
        EXPECT_NEAR(seen.value, std::round(seen.value), 0.05) << "at " << second;
    }
}

TEST_F(TakeWithSoundTest, IsSilentWhileTheServerIsAwayAndInStepAfterwards) {
    ASSERT_TRUE(start(true, "desk"));
    claps(1);
    server.kill();
    ASSERT_TRUE(
        wasTold("The system audio is lost, and silence recorded in its place: The sound server has gone away."));
    ASSERT_TRUE(wasTold("The microphone is lost, and silence recorded in its place: The sound server has gone away."));
    runFor(loop, 1_s);
    ASSERT_TRUE(server.start());
    ASSERT_TRUE(wasTold("The system audio is back."));
    ASSERT_TRUE(wasTold("The microphone is back."));
    player.emplace(server.name(), sink, 1000);
    runFor(loop, 0.3_s);
    claps(2);

    // A device that hangs is no server that is gone.
    told.clear();
    server.freeze();
    EXPECT_TRUE(
        wasTold("The microphone has given no sound for 2 s and is started anew; silence is recorded meanwhile."));
    server.thaw();
    EXPECT_TRUE(wasTold("The microphone can be heard again."));
    player.emplace(server.name(), sink, 1000);
    runFor(loop, 1_s);
    claps(2);
    const auto movie = stop();

    const auto flashes = flashesOf(movie);
    EXPECT_EQ(flashes.size(), 5U);
    expectInStep(flashes, tonesOf(decodedSound(movie, 0)), "system audio");
    expectInStep(flashes, tonesOf(decodedSound(movie, 1)), "microphone");
}

TEST_F(TakeWithSoundTest, GrowsOnDiskWhileTheScreenStandsStill) {
    ASSERT_TRUE(start(false, "desk"));
    claps(1);
    const auto soundOnDisk = [&] {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path()))
            if (entry.path().extension() == ".mov")
                return static_cast<double>(decodedSound(entry.path(), 0).size()) / kSoundRate;
        return 0.0;
    };
    runFor(loop, 3_s);
    const double first = soundOnDisk();
    EXPECT_GT(first, 3.65 - 1) << "all but the last second";
    runFor(loop, 2_s);
    EXPECT_NEAR(soundOnDisk() - first, 2, 1);
    const auto movie = stop();
    EXPECT_EQ(tonesOf(decodedSound(movie, 0)).size(), 1U);
    EXPECT_TRUE(decodedSound(movie, 1).empty()) << "one track for one input";
}

TEST_F(TakeWithSoundTest, DoesNotStartWithoutTheSoundThatWasAskedFor) {
    const auto started = start(true, "piano");
    ASSERT_FALSE(started);
    EXPECT_EQ(started.error().description(), "Recording didn’t start: The microphone “piano” is not connected.");
    EXPECT_TRUE(folder.names().empty());
}

} // namespace morvelin
