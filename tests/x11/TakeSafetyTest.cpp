// Nothing is lost: takes whose program is killed, whose disk is full, whose display server hangs. With
// MORVELIN_MANY_FAULTS set, at many more moments.

#include <random>
#include <thread>

#include <sched.h>
#include <sys/mount.h>

#include "x11/RunningProgram.h"
#include "x11/TakeFixture.h"

namespace morvelin {

namespace {

namespace fs = std::filesystem;

bool wantsManyFaults() { return std::getenv("MORVELIN_MANY_FAULTS") != nullptr; }

/// Redraws the window with noise until it goes: the hardest thing to encode.
class Noise {
public:
    Noise(const std::string& display, PixelSize size)
        : m_thread([=](const std::stop_token& stop) {
              Desktop desktop(display);
              const xcb_window_t window = desktop.openWindow({0, 0, size.width, size.height}, 0);
              for (std::uint32_t seed = 1; !stop.stop_requested();) {
                  for (int cell = 0; cell < 2000; ++cell) {
                      seed = seed * 1664525 + 1013904223;
                      const auto at = [&](unsigned shift, int length) {
                          return static_cast<int>(seed >> shift) % length;
                      };
                      desktop.fill(window, {at(2, size.width), at(9, size.height), 4, 4}, seed >> 8);
                  }
                  desktop.settle();
                  std::this_thread::sleep_for(std::chrono::milliseconds(10));
              }
          }) {}

private:
    std::jthread m_thread;
};

} // namespace

// ---------------------------------------------------------------------------------------------------- disk full

namespace {

/// A small disk of its own, seen by this thread and its later ones. False where the system does not let us have one.
bool mountSmallDisk(const fs::path& place, const std::string& size) {
    if (unshare(CLONE_NEWNS) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
    return mount("tmpfs", place.c_str(), "tmpfs", 0, ("size=" + size).c_str()) == 0;
}

/// Runs in a process without other threads, which would not see the disk.
class TakeOnASmallDisk : public TakeTest {};

} // namespace

/// Not a test by itself: what the next one runs in another process.
TEST_F(TakeOnASmallDisk, DISABLED_KeepsAllUpToThen) {
    const char* size = std::getenv("MORVELIN_TEST_DISK");
    if (size == nullptr) GTEST_SKIP();
    const fs::path disk = folder.path() / "disk";
    fs::create_directories(disk);
    ASSERT_TRUE(mountSmallDisk(disk, size));
    {
        const Noise noise(display.name(), {640, 480});
        start(disk / "Projects");
        EXPECT_TRUE(runUntil(
            loop, [&] { return isInterrupted; }, 60_s));
    }
    const auto finished = stop();
    EXPECT_NE(finished.interruption.value_or("").find("There is no space left on the disk for the recording."),
              std::string::npos);
    const auto project = open(finished.bundleURL);
    const auto movie = openMovie(project.recordingURL);
    ASSERT_TRUE(movie);
    EXPECT_NEAR(movie->properties().end.value, finished.duration.value, 0.02);
    EXPECT_GE(lumaAt(*movie, finished.duration), 0);
    EXPECT_LE(project.cursorEvents.back().timestamp.sinceZero(), finished.duration);
    // On the smallest disk no second key frame comes, behind which all before it would be safe.
    EXPECT_GT(finished.duration, std::string(size) == "10m" ? 0.5_s : 0.03_s);
}

TEST_F(TakeTest, KeepsWhatItHasWhenTheDiskIsFull) {
    const pid_t trial = fork();
    if (trial == 0) _exit(mountSmallDisk(folder.path(), "1m") ? 0 : 1);
    int status = -1;
    waitpid(trial, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) GTEST_SKIP() << "this system lets no test mount a disk";

    std::vector<std::string> sizes{"10m", "768k"};
    std::mt19937 random(std::random_device{}());
    while (wantsManyFaults() && sizes.size() < 20) sizes.push_back(std::to_string(700 + random() % 8000) + "k");
    for (const std::string& size : sizes) {
        RunningProgram test({"/proc/self/exe", "--gtest_also_run_disabled_tests",
                             "--gtest_filter=TakeOnASmallDisk.DISABLED_KeepsAllUpToThen"},
                            {{"MORVELIN_TEST_DISK", size}}, folder.path() / "test");
        EXPECT_EQ(test.wait(), 0) << size << "\n" << test.output();
    }
}

TEST_F(TakeTest, IsToldAMinuteBeforeTheDiskIsFull) {
    std::int64_t room = std::int64_t{1} << 40;
    freeSpace = [&](const fs::path&) { return room; };
    const Noise noise(display.name(), {640, 480});
    start(folder.path());
    runFor(loop, 2_s);
    EXPECT_TRUE(notices.empty());
    const auto begin = take->progress();
    runFor(loop, 2_s);
    const double rate = static_cast<double>(take->progress().bytes - begin.bytes) / 2;
    room = static_cast<std::int64_t>(rate * 50);
    ASSERT_TRUE(runUntil(
        loop, [&] { return !notices.empty(); }, 2_s));
    EXPECT_TRUE(notices[0].starts_with("The disk is nearly full: at this rate the recording can go on for about "));
    runFor(loop, 1_s);
    EXPECT_EQ(notices.size(), 1U) << "once is enough";
    stop();
}

// ------------------------------------------------------------------------------- a server that does not answer

TEST_F(TakeTest, TellsOfAScreenThatDoesNotAnswerAndGoesOn) {
    start(folder.path());
    runFor(loop, 0.5_s);
    paint(kGreen);
    runFor(loop, 0.3_s);
    desktop->seizeServer();
    paint(kRed); // which the server tells of, and hands to nobody
    const HostTime seized = loop.now();
    ASSERT_TRUE(runUntil(
        loop, [&] { return !notices.empty(); }, 5_s));
    EXPECT_LT(loop.now() - seized, 2_s);
    EXPECT_TRUE(notices[0].starts_with("The recording stands still: "));
    const Seconds standing = take->progress().recorded;
    runFor(loop, 0.5_s);
    EXPECT_EQ(take->progress().recorded, standing) << "the counter stands too";
    desktop->releaseServer();
    ASSERT_TRUE(runUntil(
        loop, [&] { return notices.size() > 1; }, 2_s));
    EXPECT_EQ(notices[1], "The recording goes on.");
    paint(kBlue);
    runFor(loop, 0.3_s);
    desktop->seizeServer();
    paint(kRed);
    runFor(loop, 0.3_s);
    const HostTime stopped = loop.now();
    const auto finished = stop();
    EXPECT_LT(loop.now() - stopped, 6_s) << "the screen is cut off";
    const auto movie = openMovie(finished.bundleURL / "recording.mov");
    ASSERT_TRUE(movie);
    EXPECT_NEAR(lumaAt(*movie, finished.duration), lumaOf(kBlue), 3);
    desktop->releaseServer();
}

// --------------------------------------------------------------------------------------------------------- kill

namespace {

/// Paints a number in cells, one more each time; neighbours differ in one cell, so no frame shows half of a change.
class NumberPainter {
public:
    static constexpr int kCells = 12;

    NumberPainter(Desktop& desktop, xcb_window_t window) : m_desktop(desktop), m_window(window) {}

    void paintNext(HostTime now) {
        const std::uint32_t code = gray(static_cast<std::uint32_t>(m_paintedAt.size()));
        for (int cell = 0; cell < kCells; ++cell)
            if (((code ^ m_code) >> cell & 1U) != 0 || m_paintedAt.empty())
                m_desktop.fill(m_window, {cell * 40, 0, 40, 40}, (code >> cell & 1U) != 0 ? 0xffffff : 0x000000);
        m_code = code;
        m_desktop.settle();
        m_paintedAt.push_back(now);
    }
    /// The number in a movie's frame.
    static std::size_t numberIn(MovieReader& movie, SourceTime time) {
        std::uint32_t code = 0;
        for (int cell = 0; cell < kCells; ++cell)
            if (lumaAt(movie, time, (cell * 40 + 20) / 640.0, 20 / 480.0) > 128) code |= 1U << cell;
        for (std::uint32_t shift = 1; shift < kCells; shift <<= 1) code ^= code >> shift;
        return code;
    }
    /// When the first thing was painted that a movie lacks which ends with this number; nothing when it lacks none.
    [[nodiscard]] std::optional<HostTime> lostSince(std::size_t number) const {
        if (number + 1 >= m_paintedAt.size()) return std::nullopt;
        return m_paintedAt[number + 1];
    }

private:
    static std::uint32_t gray(std::uint32_t number) { return number ^ number >> 1; }

    Desktop& m_desktop;
    xcb_window_t m_window;
    std::uint32_t m_code = 0;
    std::vector<HostTime> m_paintedAt;
};

class KilledTake : public TakeTest {
protected:
    std::unique_ptr<RunningProgram> run(std::vector<std::string> words, const std::string& name) {
        words.insert(words.begin(), MORVELIN_BINARY_DIR "/morvelin");
        return std::make_unique<RunningProgram>(
            std::move(words),
            RunningProgram::Environment{{"HOME", folder.path().string()}, {"DISPLAY", display.name()}},
            folder.path() / name);
    }
    [[nodiscard]] fs::path projects() const { return folder.path() / "Movies" / "Morvelin" / "Projects"; }
    [[nodiscard]] bool hasMovie() const {
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(projects(), error))
            if (entry.path().extension() == ".take" && fs::exists(entry.path() / "recording.mov", error)) return true;
        return false;
    }
    /// Records while numbers are painted, and kills the program after `length`.
    void recordAndKill(Seconds length, std::mt19937& random) {
        const auto recorder = run({"record"}, "record");
        NumberPainter painter(*desktop, window);
        HostTime begin;
        while (begin == HostTime() || loop.now() - begin < length) {
            if (begin == HostTime() && hasMovie()) begin = loop.now();
            painter.paintNext(loop.now());
            // Now and then nothing happens for a while.
            runFor(loop, random() % 100 == 0 ? 0.9_s : 0.02_s);
        }
        const HostTime killed = loop.now();
        recorder->end(SIGKILL);
        check(painter, begin, killed);
    }
    void check(const NumberPainter& painter, HostTime begin, HostTime killed) {
        const auto recoverer = run({"recover"}, "recover");
        EXPECT_EQ(recoverer->wait(), 0);
        const std::string said = recoverer->output();
        if (said.empty()) {
            EXPECT_LT(killed - begin, 1_s) << recoverer->errors();
            return;
        }
        const auto project = open(said.substr(0, said.find('\n')));
        const auto movie = openMovie(project.recordingURL);
        ASSERT_TRUE(movie);
        const SourceTime end = movie->properties().end;
        const auto lost = painter.lostSince(NumberPainter::numberIn(*movie, end));
        EXPECT_LE(killed - lost.value_or(killed), 1_s) << "of " << (killed - begin).value << " s";
        EXPECT_NEAR(project.capture.originalDuration.value, end.value, 1e-6);
        ASSERT_FALSE(project.cursorEvents.empty());
        EXPECT_GT(project.cursorEvents.back().timestamp, end - 0.3_s);
        EXPECT_LE(project.cursorEvents.back().timestamp, end);
        EXPECT_TRUE(fs::exists(said.substr(0, said.find('\n')) + "/cursorShapes.json"));
    }
};

} // namespace

TEST_F(KilledTake, BecomesAProjectThatLacksASecondAtMost) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const int rounds = wantsManyFaults() ? 50 : 5;
    for (int round = 0; round < rounds && !HasFatalFailure(); ++round)
        recordAndKill(Seconds(0.05 + 4.0 * static_cast<double>(random() % 1000) / 1000), random);
    for (const auto& entry : fs::directory_iterator(projects()))
        EXPECT_EQ(entry.path().extension(), ".morvelin") << entry.path();
}

TEST_F(KilledTake, IsLeftAloneWhileItsProgramRunsAndRecoveredByTheNextTake) {
    setenv("MORVELIN_TEST_CAMERA", "1", 1);
    const auto first = run({"record", "--camera"}, "first");
    unsetenv("MORVELIN_TEST_CAMERA");
    ASSERT_TRUE(runUntil(
        loop, [&] { return hasMovie(); }, 10_s));
    const auto second = run({"record"}, "second"); // at the same time
    runFor(loop, 1.5_s);
    const auto recoverer = run({"recover"}, "recover");
    EXPECT_EQ(recoverer->wait(), 0);
    EXPECT_EQ(recoverer->errors(), "There are no unfinished takes.\n");
    EXPECT_EQ(second->end(SIGINT), 0) << second->errors();
    first->end(SIGKILL);

    const auto next = run({"record", "--seconds", "0.3"}, "next");
    EXPECT_EQ(next->wait(), 0) << next->errors();
    EXPECT_NE(next->errors().find("[Morvelin] Recovered “Recording "), std::string::npos) << next->errors();
    const auto count = std::distance(fs::directory_iterator(projects()), fs::directory_iterator());
    EXPECT_EQ(count, 3) << "three projects and no take";
    const auto said = next->errors();
    const auto project = open(said.substr(said.find(" as /") + 4, said.find('\n') - said.find(" as /") - 4));
    ASSERT_TRUE(project.cameraURL);
    EXPECT_TRUE(openMovie(*project.cameraURL));
    ASSERT_TRUE(project.versions.front().edit.camera);
    EXPECT_LT(std::abs(project.versions.front().edit.camera->startOffset.value), 1.5);
    EXPECT_NE(project.versions.front().edit.camera->startOffset, 0_s) << "it was written down";
}

} // namespace morvelin
