#include "app/Commands.h"

#include <csignal>

#include <fmt/core.h>
#include <unistd.h>

#include "agent/ConsentQuestions.h"
#include "agent/ConsentTerminal.h"
#include "agent/MCPServer.h"
#include "app/Version.h"

namespace morvelin {

namespace {

/// The engine with its entrance for agents, until it is interrupted. Members end in the order in which they depend on
/// one another: first the sockets, then the questions that clients wait for.
class ServeRun {
public:
    explicit ServeRun(Composition& composition)
        : m_composition(composition),
          m_router(composition.routerServices()),
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

        const auto stop = [&loop] { loop.quit(); };
        const auto interrupt = loop.onSignal(SIGINT, stop);
        const auto terminate = loop.onSignal(SIGTERM, stop);
        const auto hangUp = loop.onSignal(SIGHUP, stop);
        loop.run();
        m_server.stop();
        return kSuccess;
    }

private:
    void listenToTerminal() {
        const auto print = [](std::string_view text) {
            fmt::print("{}", text);
            std::fflush(stdout);
        };
        m_terminal.emplace(m_questions, STDIN_FILENO, m_composition.loop, print);
    }

    Composition& m_composition;
    MorvelinCommandRouter m_router;
    ConsentQuestions m_questions;
    std::optional<ConsentTerminal> m_terminal;
    MCPConsent m_consent;
    MCPServer m_server;
};

} // namespace

int runServe(Composition& composition) { return ServeRun(composition).run(); }

} // namespace morvelin
