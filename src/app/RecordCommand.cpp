#include "app/Commands.h"

#include <csignal>

#include <fmt/core.h>

#include "app/ProgressLine.h"
#include "app/DeviceLists.h"
#include "app/RecordTarget.h"
#include "app/TerminalKeys.h"
#include "capture/Take.h"

namespace morvelin {

namespace {

std::string sizeText(std::int64_t bytes) {
    const auto size = static_cast<double>(bytes);
    return bytes < 1'000'000'000 ? fmt::format("{:.1f} MB", size / 1e6) : fmt::format("{:.1f} GB", size / 1e9);
}

std::string progressText(const TakeProgress& progress, bool isPaused) {
    std::string text = fmt::format("{} {}  {} frames", isPaused ? "‖" : "●", clockText(progress.recorded),
                                   progress.frames);
    if (progress.lostFrames > 0) text += fmt::format(" ({} dropped)", progress.lostFrames);
    text += "  " + sizeText(progress.bytes);
    if (progress.freeBytes) text += fmt::format(", {} free", sizeText(*progress.freeBytes));
    return text;
}

/// One run of the command; lives on the main thread until the loop ends.
class RecordRun {
public:
    RecordRun(Composition& composition, RecordOptions options)
        : m_composition(composition),
          m_options(std::move(options)),
          m_desktop(connectDesktop(composition.clock)),
          m_take({composition.loop, *m_desktop.screen, *m_desktop.pointer, *m_desktop.audioInput, *m_desktop.cameras,
                  *composition.movieWriters, *composition.movieReaders, composition.ids, composition.clock,
                  composition.log},
                 {.target = targetOf(m_options),
                  .projectsFolder = composition.moviesFolder("Projects"),
                  .systemAudio = m_options.systemAudio,
                  .microphone = m_options.microphone,
                  .camera = m_options.camera}) {}

    int run() {
        const auto stop = [this] { requestStop(); };
        const auto interrupt = m_composition.loop.onSignal(SIGINT, stop);
        const auto terminate = m_composition.loop.onSignal(SIGTERM, stop);
        const auto hangUp = m_composition.loop.onSignal(SIGHUP, stop);
        m_take.onInterrupted = stop;
        m_take.onNotice = [this](const std::string& sentence) {
            m_line.clear();
            fmt::print(stderr, "{}\n", sentence);
        };
        m_composition.loop.spawn(record());
        m_composition.loop.run();
        return m_status;
    }

private:
    enum class Stage { Starting, Recording, Finishing };

    Task<void> record() {
        auto started = co_await m_take.start();
        if (!started) {
            end(kFailure, started.error().description() + whatElse(started.error()));
            co_return;
        }
        m_stage = Stage::Recording;
        m_keys.emplace(m_composition.loop, [this](char key) {
            if (key == 'p') m_take.isPaused() ? m_take.resume() : m_take.pause();
        });
        m_tick = m_composition.loop.every(0.1_s, [this] { showProgress(); });
        if (m_options.seconds) m_timeUp = m_composition.loop.after(*m_options.seconds, [this] { requestStop(); });
        if (m_stopWanted) requestStop();
    }

    /// Also from a second Ctrl-C, which must not disturb the end of the take.
    void requestStop() {
        m_stopWanted = true;
        if (m_stage != Stage::Recording) return;
        m_stage = Stage::Finishing;
        m_composition.loop.spawn(finish());
    }

    Task<void> finish() {
        m_tick = {};
        m_keys.reset();
        m_line.clear();
        const auto take = co_await m_take.stop();
        if (!take) {
            end(kFailure, take.error().description());
            co_return;
        }
        fmt::print("{}\n", take->bundleURL.string());
        if (take->shortfall) fmt::print(stderr, "{}\n", *take->shortfall);
        end(take->interruption ? kFailure : kSuccess, take->interruption.value_or(""));
    }

    /// What could have been chosen, where what was chosen isn't there.
    std::string whatElse(const TakeError& error) {
        using enum CaptureError::Kind;
        if (error.cause == SoundUnavailable) return fmt::format("\n{}", microphoneChoices(*m_desktop.audioInput));
        if (error.cause != DisplayNotFound && error.cause != WindowNotFound && error.cause != InvalidCropRect)
            return "";
        return fmt::format("\n{}", choicesFor(targetOf(m_options), *m_desktop.screen));
    }

    void showProgress() {
        const std::string pauseKey = m_keys->areRead() ? m_take.isPaused() ? "p goes on, " : "p pauses, " : "";
        m_line.show(
            fmt::format("{}  {}Ctrl-C ends the take", progressText(m_take.progress(), m_take.isPaused()), pauseKey));
    }

    void end(int status, const std::string& message) {
        if (!message.empty()) fmt::print(stderr, "{}\n", message);
        m_status = status;
        m_composition.loop.quit();
    }

    Composition& m_composition;
    RecordOptions m_options;
    Desktop m_desktop;
    Take m_take;
    ProgressLine m_line;
    std::optional<TerminalKeys> m_keys;
    EventLoop::Timer m_tick;
    EventLoop::Timer m_timeUp;
    Stage m_stage = Stage::Starting;
    bool m_stopWanted = false;
    int m_status = kFailure;
};

} // namespace

int runRecord(Composition& composition, const RecordOptions& options) {
    recoverTakesAtStart(composition);
    useBestTakeEncoder(composition);
    return RecordRun(composition, options).run();
}

} // namespace morvelin
