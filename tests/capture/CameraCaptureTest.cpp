// A camera recorded to a movie of its own: its times, its pauses, and that no failure of it stops anything.

#include <cmath>
#include <mutex>

#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"
#include "capture/LoopRunner.h"
#include "capture/TakeCamera.h"
#include "core/CameraPlacement.h"
#include "media/FFmpegMovieReader.h"
#include "media/FFmpegMovieWriter.h"
#include "platform/null/NullCameraSource.h"
#include "platform/null/PatternCameraSource.h"

namespace morvelin {

namespace {

namespace fs = std::filesystem;

/// A camera that is pulled out when the test says so.
class FragileCameraSource final : public CameraSource {
public:
    std::vector<CameraDevice> devices() override { return {{"fragile", "Fragile"}}; }
    [[nodiscard]] EventLoop::Timer onDevicesChanged(EventLoop&, std::function<void()>) override { return {}; }
    Result<std::unique_ptr<CameraStream>, CameraError> open(const std::string&, PixelSize) override {
        return std::make_unique<Stream>(*this);
    }

    std::atomic<bool> isGone = false;

private:
    class Stream final : public CameraStream {
    public:
        explicit Stream(FragileCameraSource& source)
            : m_source(source),
              m_pattern(std::move(PatternCameraSource().open("", {}).value())) {}
        Result<bool, CameraError> next(Seconds timeout, const std::function<void(const CameraFrame&)>& take) override {
            if (m_source.isGone) return failure(CameraError{CameraError::Kind::DeviceNotFound, "Gone."});
            return m_pattern->next(timeout, take);
        }
        void interrupt() override { m_pattern->interrupt(); }

    private:
        FragileCameraSource& m_source;
        std::unique_ptr<CameraStream> m_pattern;
    };
};

class CameraCaptureTest : public testing::Test {
protected:
    CameraSession::Services services(CameraSource& source) {
        return {source, writers, [this](std::string_view line) {
                    const std::lock_guard lock(linesMutex);
                    lines.emplace_back(line);
                }};
    }
    bool wasLogged(const std::string& line) {
        const std::lock_guard lock(linesMutex);
        return std::ranges::count(lines, line) > 0;
    }
    /// The starts of the frames in which the pattern's middle is white, but for those that follow another such.
    std::vector<double> flashes(const fs::path& url) {
        std::vector<double> found;
        const auto movie = std::move(FFmpegMovieReaderFactory().open(url).value());
        length = movie->properties().end.value;
        bool wasWhite = false;
        for (SourceTime time; time < movie->properties().end;) {
            const auto frame = movie->frameAt(time).value();
            const auto luma = frame.picture->plane(0);
            const bool isWhite = luma.row(luma.height / 2)[luma.width / 2] > 200;
            if (isWhite && !wasWhite) found.push_back(frame.start.value);
            wasWhite = isWhite;
            time = frame.end;
        }
        return found;
    }

    TemporaryFolder folder;
    GLibEventLoop loop;
    SystemClock clock;
    PatternCameraSource pattern;
    FFmpegMovieWriterFactory writers;
    std::mutex linesMutex;
    std::vector<std::string> lines;
    double length = 0;
};

} // namespace

TEST_F(CameraCaptureTest, RecordsFramesAtTheirTimesWithoutThePause) {
    CameraCaptureEngine engine(loop, services(pattern));
    const fs::path url = folder.path() / "camera.mov";
    EXPECT_EQ(engine.startRecording(url).error().kind, CameraCaptureError::Kind::NotRunning);
    ASSERT_TRUE(runTask(loop, engine.startSession("")));
    ASSERT_TRUE(engine.startRecording(url));
    EXPECT_EQ(engine.startRecording(url).error().kind, CameraCaptureError::Kind::AlreadyRecording);
    runFor(loop, 1.4_s);
    const HostTime pausedAt = clock.uptime();
    engine.pause(pausedAt);
    runFor(loop, 1.2_s);
    const HostTime resumedAt = clock.uptime();
    engine.resume(resumedAt);
    runFor(loop, 1.2_s);
    const HostTime end = clock.uptime();
    const auto recording = runTask(loop, engine.stopRecording(end));
    ASSERT_TRUE(recording);
    EXPECT_EQ(recording->recordedSize, (PixelSize{640, 480}));

    const Seconds pause = resumedAt - pausedAt;
    const auto seen = flashes(url);
    EXPECT_GE(seen.size(), 2U);
    for (const double flash : seen) {
        HostTime moment = recording->firstSamplePTS + Seconds(flash);
        if (moment > pausedAt) moment += pause;
        // The movie may begin within a flash, and the pause may end within one.
        const bool isCut = flash == 0 || std::abs((moment - resumedAt).value) < 0.04;
        EXPECT_TRUE(isCut || std::abs(moment.value - std::round(moment.value)) < 0.005) << flash;
    }
    EXPECT_NEAR(length, (end - recording->firstSamplePTS - pause).value, 0.05);
    EXPECT_FALSE(runTask(loop, engine.stopRecording(end))) << "nothing is recorded any more";
}

TEST_F(CameraCaptureTest, KeepsWhatItHasWhenTheCameraIsPulledOut) {
    FragileCameraSource fragile;
    std::vector<std::string> told;
    TakeCamera camera(loop, services(fragile), [&](const std::string& sentence) { told.push_back(sentence); });
    const auto start = [&]() -> Task<bool> {
        co_await camera.start("fragile", folder.path() / "camera.mov");
        co_return true;
    };
    const HostTime screenStart = clock.uptime();
    runTask(loop, start());
    runFor(loop, 0.5_s);
    fragile.isGone = true;
    ASSERT_TRUE(runUntil(loop, [&] { return !told.empty(); }));
    EXPECT_EQ(told[0],
              "The camera has stopped, and the take goes on without it. The selected camera is no longer connected.");
    const auto finished = runTask(loop, camera.stop(clock.uptime(), screenStart, {1920, 1080}));
    ASSERT_TRUE(finished);
    EXPECT_GE(finished->settings.startOffset, 0_s);
    EXPECT_LT(finished->settings.startOffset, 0.3_s);
    (void)flashes(finished->movie);
    EXPECT_GT(length, 0.4);
}

TEST_F(CameraCaptureTest, GoesWithoutACameraThatDoesNotStart) {
    NullCameraSource none;
    std::vector<std::string> told;
    TakeCamera camera(loop, services(none), [&](const std::string& sentence) { told.push_back(sentence); });
    const auto start = [&]() -> Task<bool> {
        co_await camera.start("", folder.path() / "camera.mov");
        co_return true;
    };
    runTask(loop, start());
    EXPECT_TRUE(wasLogged("[Morvelin] Camera recording failed to start: The selected camera is no longer connected."));
    EXPECT_EQ(told.size(), 1U);
    camera.pause(1_s);
    EXPECT_FALSE(runTask(loop, camera.stop(2_s, 0_s, {1920, 1080})));
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(CameraCaptureTest, LogsAMovieThatCannotBeWritten) {
    CameraCaptureEngine engine(loop, services(pattern));
    ASSERT_TRUE(runTask(loop, engine.startSession(PatternCameraSource::kID)));
    ASSERT_TRUE(engine.startRecording(folder.path() / "nowhere" / "camera.mov"));
    runFor(loop, 0.2_s);
    EXPECT_FALSE(runTask(loop, engine.stopRecording(clock.uptime())));
    ASSERT_EQ(lines.size(), 1U) << "it is tried once";
    EXPECT_TRUE(lines[0].starts_with("[CameraCaptureEngine] Could not create writer: ")) << lines[0];
}

TEST(CameraTrack, HasItsBitRates) {
    EXPECT_EQ(cameraBitRate({640, 480}), 3'000'000);
    EXPECT_EQ(cameraBitRate({1920, 1080}), 4'354'560);
    EXPECT_EQ(cameraBitRate({3840, 2160}), 17'418'240);
    EXPECT_EQ(cameraBitRate({7680, 4320}), 20'000'000);
}

TEST(CameraSettings, OfANewTakeAreASquareAtTheBottomRight) {
    for (const PixelSize screen : {PixelSize{1920, 1080}, {1080, 1920}, {3440, 1440}}) {
        const CameraSettings settings = newCameraSettings(screen, -0.25_s);
        const double aspectRatio = static_cast<double>(screen.width) / screen.height;
        EXPECT_EQ(parkingSpot(settings.rect, aspectRatio), CameraAnchor::BottomRight);
        EXPECT_NEAR(settings.rect.width * screen.width, settings.rect.height * screen.height, 1e-6);
        EXPECT_LE(settings.rect.height, 0.4);
        EXPECT_EQ(settings.cornerRadius, 0.1);
        EXPECT_TRUE(settings.isMirrored);
        EXPECT_EQ(settings.startOffset, -0.25_s);
    }
}

TEST(CameraCaptureError, HasItsWords) {
    using enum CameraCaptureError::Kind;
    const auto words = [](CameraCaptureError::Kind kind) { return CameraCaptureError{kind, "X"}.description(); };
    EXPECT_EQ(words(SessionSetupFailed), "Could not start the camera: X");
    EXPECT_EQ(words(DeviceNotFound), "The selected camera is no longer connected.");
    EXPECT_EQ(words(NotRunning), "The camera session is not running.");
    EXPECT_EQ(words(AlreadyRecording), "The camera is already recording.");
}

} // namespace morvelin
