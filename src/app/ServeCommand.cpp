#include "app/Commands.h"

#include <csignal>

#include <fmt/core.h>
#include <unistd.h>

#include "agent/ConsentQuestions.h"
#include "agent/ConsentTerminal.h"
#include "agent/MCPServer.h"
#include "app/RecordingHost.h"
#include "app/Version.h"

namespace morvelin {

namespace {

/// The engine with its entrance for agents, until it is interrupted. Members end in the order in which they depend on
/// one another: first the sockets, then the questions that clients wait for.
class ServeRun {
public:
    explicit ServeRun(Composition& composition)
        : m_composition(composition),
          m_desktop(connectDesktop(composition.clock)),
          m_input(connectInput(composition.loop)),
          m_host({takeServices(), *m_input, composition.moviesFolder("Projects")}),
          m_router(routerServices()),
          m_questions(*composition.defaults, composition.log),
          m_consent(
              *composition.defaults,
              [this](std::string name, std::optional<std::string> version) {
                  return m_questions.ask(std::move(name), std::move(version));
              },
              MCPConsent::Questions::SideBySide, composition.log),
          m_server(m_router, m_consent, composition.loop, toolCatalogue(),
                   {.socket = mcpSocketURL(composition.home), .version = kVersion}) {}

    int run() {
        GLibEventLoop& loop = m_composition.loop;
        if (!m_server.start(m_composition.log)) return kFailure;
        m_composition.defaults->onChange([this] { m_questions.approvalsChanged(); });
        if (::isatty(STDIN_FILENO) == 1) listenToTerminal();

        const auto stop = [this] { requestStop(); };
        const auto interrupt = loop.onSignal(SIGINT, stop);
        const auto terminate = loop.onSignal(SIGTERM, stop);
        const auto hangUp = loop.onSignal(SIGHUP, stop);
        loop.run();
        m_composition.exports.cancelAll();
        return kSuccess;
    }

private:
    Take::Services takeServices() {
        return {m_composition.loop,          *m_desktop.screen,
                *m_desktop.pointer,          *m_desktop.audioInput,
                *m_desktop.cameras,          *m_composition.movieWriters,
                *m_composition.movieReaders, m_composition.ids,
                m_composition.clock,         m_composition.log};
    }
    MorvelinCommandRouter::Services routerServices() {
        auto services = m_composition.routerServices();
        services.desktop.emplace(
            MorvelinCommandRouter::DesktopControl{m_host, *m_input, *m_desktop.screen, *m_desktop.pointer});
        return services;
    }

    /// A recording that runs becomes a project first. Also from a second Ctrl-C, which must not disturb that.
    void requestStop() {
        if (std::exchange(m_isStopping, true)) return;
        m_server.stop();
        m_composition.loop.spawn(finish());
    }
    Task<void> finish() {
        co_await m_host.finish();
        m_composition.loop.quit();
    }

    void listenToTerminal() {
        const auto print = [](std::string_view text) {
            fmt::print("{}", text);
            std::fflush(stdout);
        };
        m_terminal.emplace(m_questions, STDIN_FILENO, m_composition.loop, print);
    }

    Composition& m_composition;
    Desktop m_desktop;
    std::unique_ptr<InputPosting> m_input;
    RecordingHost m_host;
    MorvelinCommandRouter m_router;
    ConsentQuestions m_questions;
    std::optional<ConsentTerminal> m_terminal;
    MCPConsent m_consent;
    MCPServer m_server;
    bool m_isStopping = false;
};

} // namespace

int runServe(Composition& composition) {
    recoverTakesAtStart(composition);
    useBestTakeEncoder(composition);
    return ServeRun(composition).run();
}

} // namespace morvelin
