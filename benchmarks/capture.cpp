// Recording a desktop at 1920 × 1080: our CPU seconds for each recorded second against `ffmpeg -f x11grab` at 60 frames
// a second with the same encoder, preset and bit rate, on the same scripted screen and on an idle one; then with what
// the machine plays and a microphone as two AAC tracks, against FFmpeg's `-f pulse`. Starts its own X server and sound
// server. One line for each screen, medians of one run.
//
//   bench-capture [RUNS [SECONDS]]      default: 5 runs of 7 s

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/format.h>

#include "capture/CaptureEngine.h"
#include "core/base/GLibEventLoop.h"
#include "media/FFmpegMovieWriter.h"
#include "platform/linux/PulseAudioInputSource.h"
#include "platform/x11/X11ScreenSource.h"
#include "sound/SoundServer.h"

namespace {

using namespace morvelin;
namespace fs = std::filesystem;

constexpr const char* kRecordFlag = "--record";
constexpr const char* kRecordSoundFlag = "--record-sound";

[[noreturn]] void stop(const std::string& why) {
    fmt::print(stderr, "capture: {}\n", why);
    std::exit(1);
}

void wait(double seconds) { std::this_thread::sleep_for(std::chrono::duration<double>(seconds)); }

// ------------------------------------------------------------------------------------------ other processes

/// A program that runs beside us and is gone with this value.
class Process {
public:
    explicit Process(const std::vector<std::string>& command) : m_id(fork()) {
        if (m_id == 0) become(command);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process() {
        if (m_id <= 0) return;
        kill(m_id, SIGKILL);
        waitpid(m_id, nullptr, 0);
    }

    /// Waits for its end; gives the CPU seconds that it took.
    double finish() {
        int status = 0;
        rusage usage{};
        wait4(m_id, &status, 0, &usage);
        m_id = -1;
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) stop("a program of the benchmark has failed");
        const auto seconds = [](const timeval& time) {
            return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
        };
        return seconds(usage.ru_utime) + seconds(usage.ru_stime);
    }

    /// CPU seconds so far.
    [[nodiscard]] double cpu() const {
        std::ifstream file(fmt::format("/proc/{}/stat", m_id));
        std::string text;
        std::getline(file, text, ')'); // the name may hold anything
        double user = 0;
        double system = 0;
        for (int field = 3; field <= 15 && file >> text; ++field) {
            if (field == 14) user = std::stod(text);
            if (field == 15) system = std::stod(text);
        }
        return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
    }

private:
    [[noreturn]] static void become(const std::vector<std::string>& command) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int silence = open("/dev/null", O_RDWR);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            if (silence >= 0) dup2(silence, stream);
        std::vector<char*> arguments;
        arguments.reserve(command.size() + 1);
        for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
        arguments.push_back(nullptr);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }

    pid_t m_id;
};

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

/// A virtual display with a window manager; DISPLAY names it.
class Desktop {
public:
    Desktop() {
        if (m_server.cpu() < 0) stop("Xvfb did not start");
        setenv("DISPLAY", name().c_str(), 1);
        for (int tries = 0; !X11ScreenSource::connect(""); ++tries) {
            if (tries == 100) stop("the X server does not answer; are xvfb, openbox, xterm and ffmpeg installed?");
            wait(0.05);
        }
        m_manager.emplace(std::vector<std::string>{"openbox"});
        wait(0.5);
    }

    [[nodiscard]] double serverCPU() const { return m_server.cpu(); }
    [[nodiscard]] static std::string name() { return fmt::format(":{}", 700 + getpid() % 200); }

private:
    Process m_server{{"Xvfb", name(), "-screen", "0", "1920x1080x24", "-nolisten", "tcp", "-noreset"}};
    std::optional<Process> m_manager;
};

/// A sound server whose output plays noise and whose microphone hears it; PULSE_SERVER names it.
class Noise {
public:
    Noise() {
        if (m_server.name().empty()) stop("pulseaudio does not start; is it installed?");
        setenv("PULSE_SERVER", m_server.name().c_str(), 1);
        m_played.emplace(noise({"-f", "pulse", "-device", "speakers", "noise"}));
        m_spoken.emplace(noise({"-f", "f32le", "-ac", "1", "-ar", "44100", "-y", m_server.deskPipe()}));
        wait(1);
    }

private:
    static std::vector<std::string> noise(std::initializer_list<std::string> output) {
        std::vector<std::string> words{"ffmpeg", "-v", "error", "-re", "-f", "lavfi", "-i", "anoisesrc=c=pink:a=0.3"};
        words.insert(words.end(), output);
        return words;
    }

    SoundServer m_server;
    std::optional<Process> m_played;
    std::optional<Process> m_spoken;
};

// ------------------------------------------------------------------------------------------ the two recorders

/// Records the display until the time is over; this is what the benchmark measures of ours.
int record(double seconds, const fs::path& movie, const SoundChoice& sound) {
    auto screen = X11ScreenSource::connect("");
    if (!screen) return 1;
    FFmpegMovieWriterFactory writers;
    const SystemClock clock;
    GLibEventLoop loop;
    PulseAudioInputSource audioInput(clock);
    CaptureEngine engine(loop, {**screen, audioInput, writers, clock, [](std::string_view) {}});
    int status = 1;
    const CaptureTarget display = DisplayTarget{};
    const auto take = [&]() -> Task<void> {
        const auto started = co_await engine.startCapture(display, movie, sound);
        if (started) {
            co_await loop.sleep(Seconds(seconds));
            const auto recording = co_await engine.stopCapture(loop.now());
            status = recording ? 0 : 1;
        }
        loop.quit();
    };
    loop.spawn(take());
    loop.run();
    return status;
}

enum class Sound { None, Recorded };

std::vector<std::string> ours(double seconds, const fs::path& movie, Sound sound) {
    return {"/proc/self/exe", sound == Sound::Recorded ? kRecordSoundFlag : kRecordFlag, fmt::format("{}", seconds),
            movie.string()};
}

std::vector<std::string> rival(double seconds, const fs::path& movie, Sound sound) {
    std::vector<std::string> words{"ffmpeg", "-v", "error", "-y"};
    const auto add = [&](std::initializer_list<std::string> more) { words.insert(words.end(), more); };
    add({"-f", "x11grab", "-framerate", "60", "-draw_mouse", "0", "-video_size", "1920x1080", "-i", Desktop::name()});
    if (sound == Sound::Recorded)
        for (const char* source : {"speakers.monitor", "desk"}) add({"-f", "pulse", "-i", source});
    add({"-t", fmt::format("{}", seconds), "-c:v", "libx264", "-preset", "ultrafast", "-tune", "zerolatency"});
    add({"-b:v", "18662400", "-g", "60", "-pix_fmt", "yuv420p"});
    if (sound == Sound::Recorded)
        add({"-map", "0:v", "-map", "1:a", "-map", "2:a", "-c:a", "aac", "-b:a", "128k", "-ar", "44100", "-ac", "2"});
    words.push_back(movie.string());
    return words;
}

// ------------------------------------------------------------------------------------------ screens and figures

/// What happens on the screen while it is recorded; gone with this value.
class Scene {
public:
    virtual ~Scene() = default;
    virtual const char* name() const = 0;
    virtual void begin() {}
    virtual void end() {}
};

class IdleScene final : public Scene {
    const char* name() const override { return "idle screen"; }
};

/// A terminal that scrolls without end and another one that is dragged about by its title bar.
class WorkScene final : public Scene {
public:
    explicit WorkScene(const fs::path& folder) : m_story(folder / "story.txt") {
        std::ofstream(m_story) << "move 1300 110 over 0.2\n"
                                  "drag 800 420 over 1.4\n"
                                  "drag 1350 300 over 1.4\n"
                                  "drag 900 150 over 1.4\n"
                                  "drag 1300 110 over 1.4\n";
    }

    const char* name() const override { return "scripted screen"; }
    void begin() override {
        m_scrolling.emplace(terminal("+60+80", "i=0; while :; do i=$((i+1)); echo \"step $i: built, linked and tested "
                                               "without a word of complaint\"; sleep 0.03; done"));
        m_dragged.emplace(terminal("+1000+100", "seq 1 2000; sleep 1000"));
        wait(1);
        m_hand.emplace(std::vector<std::string>{fs::read_symlink("/proc/self/exe").replace_filename("demo-drive"),
                                                m_story.string()});
    }
    void end() override {
        m_hand.reset();
        m_scrolling.reset();
        m_dragged.reset();
        wait(0.3);
    }

private:
    static std::vector<std::string> terminal(const std::string& place, const std::string& script) {
        return {"xterm", "-fa", "Monospace", "-fs", "11", "-geometry", "90x38" + place, "-e", "sh", "-c", script};
    }

    fs::path m_story;
    std::optional<Process> m_scrolling;
    std::optional<Process> m_dragged;
    std::optional<Process> m_hand;
};

/// CPU seconds for each recorded second.
struct Cost {
    double recorder = 0;
    double server = 0;
};

Cost measure(const Desktop& desktop, Scene& scene, const std::vector<std::string>& command, double seconds) {
    scene.begin();
    const double serverBefore = desktop.serverCPU();
    const double recorder = Process(command).finish();
    const double server = desktop.serverCPU() - serverBefore;
    scene.end();
    return {recorder / seconds, server / seconds};
}

double median(const std::vector<Cost>& costs, double Cost::*figure) {
    std::vector<double> values;
    values.reserve(costs.size());
    for (const Cost& cost : costs) values.push_back(cost.*figure);
    std::ranges::sort(values);
    return values[values.size() / 2];
}

void compare(const Desktop& desktop, Scene& scene, const fs::path& folder, int runs, double seconds, Sound sound) {
    std::vector<Cost> mine;
    std::vector<Cost> theirs;
    for (int run = 0; run < runs; ++run) {
        mine.push_back(measure(desktop, scene, ours(seconds, folder / "ours.mov", sound), seconds));
        theirs.push_back(measure(desktop, scene, rival(seconds, folder / "theirs.mov", sound), seconds));
    }
    const double recorder = median(mine, &Cost::recorder);
    const double rivalRecorder = median(theirs, &Cost::recorder);
    fmt::print("{}{}: {:.3f} of x11grab's CPU: {:.3f} against {:.3f} s for each recorded second (the X server beside: "
               "{:.3f} against {:.3f}); files {:.1f} against {:.1f} MB\n",
               scene.name(), sound == Sound::Recorded ? " with sound" : "", recorder / rivalRecorder, recorder,
               rivalRecorder, median(mine, &Cost::server), median(theirs, &Cost::server),
               static_cast<double>(fs::file_size(folder / "ours.mov")) / 1e6,
               static_cast<double>(fs::file_size(folder / "theirs.mov")) / 1e6);
}

} // namespace

int main(int count, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + count);
    if (words.size() == 3 && words[0] == kRecordFlag) return record(std::stod(words[1]), words[2], {});
    if (words.size() == 3 && words[0] == kRecordSoundFlag)
        return record(std::stod(words[1]), words[2], {.systemAudio = true, .microphone = ""});
    const int runs = words.empty() ? 5 : std::stoi(words[0]);
    const double seconds = words.size() < 2 ? 7 : std::stod(words[1]);

    const Folder folder;
    const Desktop desktop;
    WorkScene work(folder.path);
    compare(desktop, work, folder.path, runs, seconds, Sound::None);
    {
        const Noise noise;
        compare(desktop, work, folder.path, runs, seconds, Sound::Recorded);
    }
    IdleScene idle;
    compare(desktop, idle, folder.path, runs, seconds, Sound::None);
}
