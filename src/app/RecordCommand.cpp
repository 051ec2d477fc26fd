#include "app/Commands.h"

#include <csignal>

#include <fmt/core.h>

#include "app/ProgressLine.h"
#include "capture/Take.h"

namespace morvelin {

namespace {

/// One run of the command; lives on the main thread until the loop ends.
class RecordRun {
public:
    RecordRun(Composition& composition, RecordOptions options)
        : m_composition(composition),
          m_options(std::move(options)),
          m_desktop(connectDesktop()),
          m_take({composition.loop, *m_desktop.screen, *m_desktop.pointer, *composition.movieWriters,
                  *composition.movieReaders, composition.ids, composition.clock, composition.log},
                 {.target = DisplayTarget{m_options.display.value_or("")},
                  .projectsFolder = composition.moviesFolder("Projects")}) {}

    int run() {
        const auto stop = [this] { requestStop(); };
        const auto interrupt = m_composition.loop.onSignal(SIGINT, stop);
        const auto terminate = m_composition.loop.onSignal(SIGTERM, stop);
        const auto hangUp = m_composition.loop.onSignal(SIGHUP, stop);
        m_take.onInterrupted = stop;
        m_composition.loop.spawn(record());
        m_composition.loop.run();
        return m_status;
    }

private:
    enum class Stage { Starting, Recording, Finishing };

    Task<void> record() {
        auto started = co_await m_take.start();
        if (!started) {
            end(kFailure, started.error().description());
            co_return;
        }
        m_stage = Stage::Recording;
        m_startedAt = m_composition.loop.now();
        m_tick = m_composition.loop.every(0.1_s, [this] { showTime(); });
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
        m_line.clear();
        const auto take = co_await m_take.stop();
        if (!take) {
            end(kFailure, take.error().description());
            co_return;
        }
        fmt::print("{}\n", take->bundleURL.string());
        end(take->interruption ? kFailure : kSuccess, take->interruption.value_or(""));
    }

    void showTime() {
        m_line.show(fmt::format("● {}  Ctrl-C ends the take", clockText(m_composition.loop.now() - m_startedAt)));
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
    EventLoop::Timer m_tick;
    EventLoop::Timer m_timeUp;
    HostTime m_startedAt;
    Stage m_stage = Stage::Starting;
    bool m_stopWanted = false;
    int m_status = kFailure;
};

} // namespace

int runRecord(Composition& composition, const RecordOptions& options) { return RecordRun(composition, options).run(); }

} // namespace morvelin
