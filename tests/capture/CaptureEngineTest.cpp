// A take's movie from a screen in memory: sizes, times, pauses, what is written and when, and every error.

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <condition_variable>
#include <deque>
#include <mutex>

#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"
#include "capture/CaptureEngine.h"
#include "capture/LoopRunner.h"
#include "media/ScreenScaler.h"
#include "platform/null/NullAudioInputSource.h"
#include "platform/null/NullScreenSource.h"

namespace morvelin {

namespace {

/// A screen that shows what a test puts on it, and wakes its stream as a real one would.
class InMemoryScreen final : public ScreenSource {
public:
    explicit InMemoryScreen(PixelSize size)
        : m_size(size),
          m_pixels(static_cast<std::size_t>(size.width * size.height * 4)) {}

    Result<std::vector<Display>, ScreenError> displays() override {
        return std::vector<Display>{{"left", {0, 0, m_size.width, m_size.height}, 1, false},
                                    {"right", {m_size.width, 0, m_size.width, m_size.height}, 1, true}};
    }
    Result<std::vector<DesktopWindow>, ScreenError> windows() override { return std::vector<DesktopWindow>{}; }
    std::optional<PixelBox> windowFrame(WindowID) override { return std::nullopt; }
    Result<std::unique_ptr<ScreenStream>, ScreenError> open(const ScreenStreamOptions& options) override {
        opened = options;
        return std::make_unique<Stream>(*this);
    }

    void change(HostTime time, PixelBox box, std::uint8_t shade) {
        const std::lock_guard lock(m_mutex);
        m_changes.push_back({time, box, shade});
        m_news.notify_all();
    }
    /// Whether the stream has taken all changes and waits for more.
    bool isIdle() {
        const std::lock_guard lock(m_mutex);
        return m_isWaiting && m_changes.empty();
    }
    void goAway() {
        const std::lock_guard lock(m_mutex);
        m_isGone = true;
        m_news.notify_all();
    }

    ScreenStreamOptions opened;
    std::atomic<Seconds> interval{Seconds(1.0 / 60)}; ///< that the stream was last told

private:
    struct Change {
        HostTime time;
        PixelBox box;
        std::uint8_t shade = 0;
    };

    class Stream final : public ScreenStream {
    public:
        explicit Stream(InMemoryScreen& screen) : m_screen(screen) {}
        PixelSize size() const override { return m_screen.m_size; }

        Result<bool, ScreenError> next(Seconds timeout, const std::function<void(const ScreenFrame&)>& take) override {
            std::unique_lock lock(m_screen.m_mutex);
            const auto hasNews = [&] { return m_screen.m_isGone || m_isInterrupted || !m_screen.m_changes.empty(); };
            m_screen.m_isWaiting = true;
            const bool came = m_screen.m_news.wait_for(lock, std::chrono::duration<double>(timeout.value), hasNews);
            m_screen.m_isWaiting = false;
            if (!came) return false;
            if (std::exchange(m_isInterrupted, false)) return false;
            if (m_screen.m_isGone) return failure(ScreenError{ScreenError::Kind::ConnectionLost, "It has gone."});
            const Change change = m_screen.m_changes.front();
            m_screen.m_changes.pop_front();
            for (int y = change.box.y; y < change.box.bottom(); ++y)
                std::fill_n(&m_screen.m_pixels[static_cast<std::size_t>((y * size().width + change.box.x) * 4)],
                            change.box.width * 4, change.shade);
            take({change.time, {m_screen.m_pixels.data(), size().width * 4, size()}, std::span(&change.box, 1)});
            return true;
        }
        void pace(Seconds minimumFrameInterval) override { m_screen.interval = minimumFrameInterval; }
        void cut() override { m_screen.goAway(); }
        void interrupt() override {
            const std::lock_guard lock(m_screen.m_mutex);
            m_isInterrupted = true;
            m_screen.m_news.notify_all();
        }

    private:
        InMemoryScreen& m_screen;
        bool m_isInterrupted = false;
    };

    PixelSize m_size;
    std::vector<std::uint8_t> m_pixels;
    std::mutex m_mutex; ///< guards the rest
    std::condition_variable m_news;
    std::deque<Change> m_changes;
    bool m_isGone = false;
    bool m_isWaiting = false;
};

/// Writes down what a writer is told by the capture thread.
class WriterLog final : public MovieWriterFactory {
public:
    struct Frame {
        double time = 0;
        std::vector<PixelBox> changed;
        int luma = 0; ///< of the first pixel
    };

    Result<std::unique_ptr<MovieWriter>, MovieWriterError> create(const MovieSettings& asked) override {
        settings = asked;
        if (hasNoEncoder) return failure(MovieWriterError{MovieWriterError::Kind::NoEncoder, "None opens.", 0});
        return std::make_unique<Writer>(*this);
    }

    [[nodiscard]] std::vector<Frame> frames() const {
        const std::lock_guard lock(m_mutex);
        return m_frames;
    }
    [[nodiscard]] int flushes() const {
        const std::lock_guard lock(m_mutex);
        return m_flushes;
    }

    MovieSettings settings;
    double end = -1;
    bool hasNoEncoder = false;
    std::optional<std::size_t> failsAt; ///< the number of frames after which the disk is full

private:
    class Writer final : public MovieWriter {
    public:
        explicit Writer(WriterLog& log) : m_log(log) {}
        Result<void, MovieWriterError> append(const Picture& picture, Seconds time,
                                              std::span<const PixelBox> changed) override {
            const std::lock_guard lock(m_log.m_mutex);
            if (m_log.failsAt && m_log.m_frames.size() >= *m_log.failsAt)
                return failure(MovieWriterError{MovieWriterError::Kind::WritingFailed, "Full.", ENOSPC});
            m_log.m_frames.push_back({time.value, {changed.begin(), changed.end()}, *picture.plane(0).data});
            return {};
        }
        Result<void, MovieWriterError> appendSound(std::size_t, std::span<const float>) override { return {}; }
        Result<void, MovieWriterError> flush() override {
            const std::lock_guard lock(m_log.m_mutex);
            ++m_log.m_flushes;
            return {};
        }
        Result<void, MovieWriterError> finish(Seconds endTime) override {
            m_log.end = endTime.value;
            return {};
        }
        std::int64_t bytesWritten() const override { return 0; }

    private:
        WriterLog& m_log;
    };

    mutable std::mutex m_mutex; ///< guards the rest
    std::vector<Frame> m_frames;
    int m_flushes = 0;
};

class CaptureEngineTest : public testing::Test {
protected:
    CaptureSession::Services services() {
        return {screen, audioInput, writers, clock, [this](std::string_view line) {
                    const std::lock_guard lock(linesMutex);
                    lines.emplace_back(line);
                }};
    }
    /// Starts with a black screen at time `begin`.
    Result<CaptureStart, CaptureError> start() {
        begin = clock.uptime();
        screen.change(begin, {0, 0, 64, 48}, 0);
        return runTask(loop, engine.startCapture(DisplayTarget{}, folder.path() / "take.mov"));
    }
    void change(Seconds after, std::uint8_t shade) {
        screen.change(begin + after, {16, 16, 8, 8}, shade);
        ASSERT_TRUE(runUntil(loop, [this] { return screen.isIdle(); }));
    }
    Result<CapturedRecording, CaptureError> stop(Seconds after) {
        return runTask(loop, engine.stopCapture(begin + after));
    }
    std::vector<double> times() const {
        std::vector<double> result;
        for (const auto& frame : writers.frames()) result.push_back(std::round(frame.time * 1000) / 1000);
        return result;
    }

    TemporaryFolder folder;
    GLibEventLoop loop;
    SystemClock clock;
    InMemoryScreen screen{{64, 48}};
    NullAudioInputSource audioInput{{}};
    WriterLog writers;
    std::mutex linesMutex;
    std::vector<std::string> lines;
    HostTime begin;
    CaptureEngine engine{loop, services()};
};

} // namespace

TEST_F(CaptureEngineTest, WritesEachChangeAtItsTimeAndEndsAtStop) {
    const auto started = start();
    ASSERT_TRUE(started);
    EXPECT_EQ(started->firstFrameTime, begin);
    EXPECT_EQ(started->geometry.area, (PixelBox{64, 0, 64, 48})) << "the primary display";
    EXPECT_EQ(screen.opened.displayID, "right");
    change(0.1_s, 255);
    change(0.25_s, 80);
    const auto recording = stop(0.4_s);
    ASSERT_TRUE(recording);
    EXPECT_NEAR(recording->duration.value, 0.4, 1e-9);
    EXPECT_NEAR(writers.end, 0.4, 1e-9);
    EXPECT_EQ(times(), (std::vector{0.0, 0.1, 0.25}));
    EXPECT_EQ(writers.frames()[0].changed, (std::vector<PixelBox>{{0, 0, 64, 48}}));
    EXPECT_EQ(writers.frames()[1].changed, (std::vector<PixelBox>{{16, 16, 10, 8}})) << "with the chroma on its right";
    EXPECT_EQ(writers.settings.container, MovieSettings::Container::FragmentedQuickTime);
    EXPECT_EQ(writers.settings.bitRate, 12'000'000);
    ASSERT_FALSE(lines.empty());
    EXPECT_TRUE(lines[0].starts_with("[CaptureEngine] Started writer session at PTS="));
}

TEST_F(CaptureEngineTest, SlidesBackWhatFollowsAPause) {
    ASSERT_TRUE(start());
    change(0.1_s, 10);
    engine.pause(begin + 0.2_s);
    engine.pause(begin + 5_s); // already paused
    EXPECT_TRUE(engine.isPaused());
    runFor(loop, 0.03_s);
    screen.change(begin + 10.3_s, {16, 16, 8, 8}, 20);
    runFor(loop, 0.03_s);
    EXPECT_EQ(writers.frames().size(), 3U) << "no frame comes in a pause; the last one was said again to flush it";
    EXPECT_EQ(writers.flushes(), 1);
    engine.resume(begin + 10.2_s);
    runFor(loop, 0.03_s);
    const auto recording = stop(10.5_s);
    ASSERT_TRUE(recording);
    EXPECT_NEAR(recording->duration.value, 0.5, 1e-9);
    ASSERT_EQ(writers.frames().size(), 4U);
    EXPECT_NEAR(writers.frames()[3].time, 0.3, 1e-9);
}

TEST_F(CaptureEngineTest, EndsAPausedTakeWhereThePauseBegan) {
    ASSERT_TRUE(start());
    change(0.1_s, 10);
    engine.pause(begin + 0.3_s);
    const auto recording = stop(60_s);
    ASSERT_TRUE(recording);
    EXPECT_NEAR(recording->duration.value, 0.3, 1e-9);
}

TEST_F(CaptureEngineTest, NeverWritesTwoFramesOfOneTimeAndLosesNeither) {
    ASSERT_TRUE(start());
    change(0.1_s, 10);
    screen.change(begin + 0.1_s, {0, 0, 2, 2}, 200); // the same moment
    runFor(loop, 0.3_s);
    ASSERT_TRUE(stop(1_s));
    ASSERT_GE(writers.frames().size(), 3U);
    EXPECT_GT(writers.frames()[2].time, 0.1);
    EXPECT_EQ(writers.frames()[2].changed, (std::vector<PixelBox>{{0, 0, 4, 2}}));
    EXPECT_GT(writers.frames()[2].luma, 150) << "the late change is in the movie";
}

TEST_F(CaptureEngineTest, FlushesOnceWithinASecondOfStillness) {
    ASSERT_TRUE(start());
    runFor(loop, 1.2_s);
    EXPECT_EQ(writers.flushes(), 1);
    ASSERT_EQ(writers.frames().size(), 2U);
    EXPECT_LT(writers.frames()[1].time, 1);
    EXPECT_TRUE(writers.frames()[1].changed.empty());
    runFor(loop, 1_s);
    EXPECT_EQ(writers.flushes(), 1) << "an idle screen costs nothing";
    EXPECT_EQ(writers.frames().size(), 2U);
    ASSERT_TRUE(stop(2.5_s));
}

TEST_F(CaptureEngineTest, RefusesWhatDoesNotFitItsState) {
    EXPECT_EQ(stop(0_s).error().kind, CaptureError::Kind::NotRecording);
    ASSERT_TRUE(start());
    const auto second = runTask(loop, engine.startCapture(DisplayTarget{}, folder.path() / "other.mov"));
    EXPECT_EQ(second.error().kind, CaptureError::Kind::AlreadyRecording);

    std::optional<Result<CapturedRecording, CaptureError>> first;
    const auto keep = [](Task<Result<CapturedRecording, CaptureError>> task, auto& result) -> Task<void> {
        result = co_await task;
    };
    loop.spawn(keep(engine.stopCapture(begin + 1_s), first));
    EXPECT_EQ(stop(1_s).error().kind, CaptureError::Kind::StopInProgress);
    ASSERT_TRUE(runUntil(loop, [&] { return first.has_value(); }));
    EXPECT_TRUE(*first);
    ASSERT_TRUE(start()) << "an engine can record again";
    ASSERT_TRUE(stop(1_s));
}

TEST_F(CaptureEngineTest, RecordsFewerFramesEvenlyWhereTheMachineCannotKeepUp) {
    ASSERT_TRUE(start());
    // Each frame is done 30 ms after it was seen.
    for (int frame = 0; frame < 500 && screen.interval.load() < 0.02_s; ++frame) {
        screen.change(clock.uptime() - 0.03_s, {16, 16, 8, 8}, 20);
        runFor(loop, 0.015_s);
    }
    EXPECT_NEAR(screen.interval.load().value, 1.0 / 30, 1e-9);
    const auto recording = stop(clock.uptime() - begin);
    ASSERT_TRUE(recording);
    EXPECT_EQ(recording->lowestFrameRate, 30);
}

TEST_F(CaptureEngineTest, TellsOfATakeThatEndsByItself) {
    std::vector<std::string> told;
    engine.onStreamStopped = [&](const CaptureError& error) { told.push_back(error.description()); };
    ASSERT_TRUE(start());
    change(0.05_s, 10);
    screen.goAway();
    ASSERT_TRUE(runUntil(loop, [&] { return !told.empty(); }));
    EXPECT_EQ(told[0], "It has gone.");
    const auto recording = stop(60_s);
    ASSERT_TRUE(recording);
    EXPECT_LT(recording->duration, 2_s) << "it lasts until the screen went, not until stop";
    EXPECT_TRUE(std::ranges::count(lines, "[CaptureEngine] Stream stopped with error"));
}

TEST_F(CaptureEngineTest, TellsOfAFullDisk) {
    std::vector<std::string> told;
    engine.onStreamStopped = [&](const CaptureError& error) { told.push_back(error.description()); };
    writers.failsAt = 2;
    ASSERT_TRUE(start());
    change(0.05_s, 10);
    screen.change(begin + 0.1_s, {0, 0, 2, 2}, 20);
    ASSERT_TRUE(runUntil(loop, [&] { return !told.empty(); }));
    EXPECT_EQ(told[0], "There is no space left on the disk for the recording.");
    EXPECT_TRUE(std::ranges::count(lines, "[CaptureEngine] Failed to append video sample"));
    EXPECT_TRUE(stop(1_s));
}

TEST_F(CaptureEngineTest, CompletesTheMovieWhenItIsDropped) {
    {
        CaptureEngine dropped(loop, services());
        screen.change(clock.uptime(), {0, 0, 64, 48}, 0);
        ASSERT_TRUE(runTask(loop, dropped.startCapture(DisplayTarget{"left"}, folder.path() / "take.mov")));
    }
    EXPECT_GT(writers.end, 0);
}

TEST_F(CaptureEngineTest, DoesNotStartWithoutADisplayAScreenOrAnEncoder) {
    const auto missing = runTask(loop, engine.startCapture(DisplayTarget{"third"}, folder.path() / "take.mov"));
    EXPECT_EQ(missing.error().description(), "No capturable display was found.");

    NullScreenSource none(ScreenError{ScreenError::Kind::NoDisplayServer, "There is no screen."});
    CaptureEngine blind(loop, {none, audioInput, writers, clock, [](std::string_view) {}});
    const auto unseen = runTask(loop, blind.startCapture(DisplayTarget{}, folder.path() / "take.mov"));
    EXPECT_EQ(unseen.error().description(), "There is no screen.");

    writers.hasNoEncoder = true;
    EXPECT_EQ(start().error().description(),
              "Could not configure video writer: No compatible video codec for 64 × 48. None opens.");
}

TEST(CaptureGeometry, KeepsMoviesEvenAndWithinTheirLimits) {
    struct Case {
        PixelSize content;
        PixelSize movie;
    };
    for (const auto& [content, movie] :
         {Case{{1920, 1080}, {1920, 1080}}, Case{{1365, 767}, {1364, 766}}, Case{{6016, 3384}, {6016, 3384}},
          Case{{7680, 4320}, {7680, 4320}}, Case{{15360, 4320}, {7680, 2160}}, Case{{1, 1}, {2, 2}}})
        EXPECT_EQ(movieSizeFor(content), movie) << content.width;

    EXPECT_EQ(captureBitRate({1920, 1080}), 18'662'400);
    EXPECT_EQ(captureBitRate({64, 48}), 12'000'000);
    EXPECT_EQ(captureBitRate({7680, 4320}), 120'000'000);
}

TEST(CaptureGeometry, FindsDisplaysWindowsAndAreas) {
    const CaptureChoices choices{{{"a", {0, 0, 1365, 767}, 1, false}, {"b", {1365, 0, 3840, 2160}, 2, true}},
                                 {{1, "Inbox – Mail", "Mail", {1400, 10, 801, 601}},
                                  {2, "mail", "Terminal", {20, 30, 400, 300}},
                                  {3, "7", "Seven", {0, 0, 1, 300}},
                                  {4, "", "Untitled", {0, 0, 10, 10}}}};
    using enum CaptureError::Kind;
    struct Case {
        const char* what;
        CaptureTarget target;
        PixelBox area;
        std::string displayID;
        double scale = 1;
        std::optional<CaptureError::Kind> error = {};
    };
    for (const auto& [what, target, area, displayID, scale, error] : {
             Case{"an odd display", DisplayTarget{"a"}, {0, 0, 1364, 766}, "a"},
             Case{"the primary one", DisplayTarget{}, {1365, 0, 3840, 2160}, "b", 2},
             Case{"no display", DisplayTarget{"c"}, {}, "", 1, DisplayNotFound},
             Case{"the whole title before a part of one", WindowTarget{" MAIL", {}}, {20, 30, 400, 300}, ""},
             Case{"a part of a title", WindowTarget{"inbox", {}}, {1400, 10, 800, 600}, "", 2},
             Case{"by number", WindowTarget{"", 2}, {20, 30, 400, 300}, ""},
             Case{"a title that looks like a number", WindowTarget{"mail", 99}, {20, 30, 400, 300}, ""},
             Case{"no window", WindowTarget{"Calendar", {}}, {}, "", 1, WindowNotFound},
             Case{"no title", WindowTarget{"  ", {}}, {}, "", 1, WindowNotFound},
             Case{"a window without a picture", WindowTarget{"7", {}}, {}, "", 1, WindowNotFound},
             Case{"an area", AreaTarget{{10, 20, 101, 51}, ""}, {10, 20, 100, 50}, "a"},
             Case{"an area on a scaled display", AreaTarget{{10, 20, 100, 50}, "b"}, {1385, 40, 200, 100}, "b", 2},
             Case{"one from the desktop's corner", AreaTarget{{1500, 20, 100, 50}, ""}, {3000, 40, 200, 100}, "b", 2},
             Case{"half outside", AreaTarget{{-1, 0, 100, 50}, "a"}, {}, "", 1, InvalidCropRect},
             Case{"on two displays", AreaTarget{{1300, 0, 100, 50}, "a"}, {}, "", 1, InvalidCropRect},
             Case{"nowhere", AreaTarget{{9000, 9000, 100, 50}, ""}, {}, "", 1, InvalidCropRect},
             Case{"too thin", AreaTarget{{0, 0, 1, 50}, ""}, {}, "", 1, InvalidCropRect},
             Case{"no number", AreaTarget{{std::nan(""), 0, 100, 50}, ""}, {}, "", 1, InvalidCropRect},
             Case{"on no display", AreaTarget{{0, 0, 100, 50}, "c"}, {}, "", 1, DisplayNotFound},
         }) {
        const auto found = resolveTarget(target, choices);
        EXPECT_EQ(found ? std::nullopt : std::optional(found.error().kind), error) << what;
        if (!found) continue;
        EXPECT_EQ(found->area, area) << what;
        EXPECT_EQ(found->movieSize, (PixelSize{area.width, area.height})) << what;
        EXPECT_EQ(found->displayID, displayID) << what;
        EXPECT_EQ(found->pointPixelScale, scale) << what;
        EXPECT_EQ(found->windowID.has_value(), std::holds_alternative<WindowTarget>(target)) << what;
    }
    EXPECT_FALSE(resolveTarget(DisplayTarget{}, {}));
}

TEST(ScreenScaler, TakesTheMeanOfWhatEachPixelCovers) {
    // 3 × 2 pixels to 2 × 1: the middle column is shared.
    const std::vector<std::uint8_t> source{0, 0, 0, 0, 90, 0, 0, 0, 30, 60, 0, 0, //
                                           0, 0, 0, 0, 90, 0, 0, 0, 30, 60, 0, 0};
    ScreenScaler scaler({3, 2}, {2, 1});
    EXPECT_EQ(scaler.update({source.data(), 12, {3, 2}}, {0, 0, 3, 2}), (PixelBox{0, 0, 2, 1}));
    EXPECT_EQ(scaler.pixels().data[0], 30);
    EXPECT_EQ(scaler.pixels().data[4], 50);
    EXPECT_EQ(scaler.pixels().data[5], 40);

    ScreenScaler wide({15360, 4320}, {7680, 2160});
    const std::vector<std::uint8_t> black(15360 * 4320 * 4);
    EXPECT_EQ(wide.update({black.data(), 15360 * 4, {15360, 4320}}, {101, 7, 3, 2}), (PixelBox{50, 3, 2, 2}));
}

TEST(CaptureError, HasItsWords) {
    using enum CaptureError::Kind;
    struct Case {
        CaptureError error;
        const char* words;
    };
    for (const auto& [error, words] :
         {Case{{OutputDirectoryCreationFailed, "X"}, "Could not create output directory: X"},
          Case{{AssetWriterSetupFailed, "X"}, "Could not configure video writer: X"},
          Case{{AssetWriterFailed, "X"}, "Video writer failed while finalizing output: X"},
          Case{{AlreadyRecording, ""}, "A recording session is already running."},
          Case{{NotRecording, ""}, "No active recording session was found."},
          Case{{DisplayNotFound, ""}, "No capturable display was found."},
          Case{{WindowNotFound, ""}, "No target window was selected for capture."},
          Case{{InvalidCropRect, ""}, "Selected area is invalid for the chosen display."},
          Case{{StopInProgress, ""}, "The recording is already being stopped."}})
        EXPECT_EQ(error.description(), words);
}

} // namespace morvelin
