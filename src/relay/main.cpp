// The stdio relay: agent clients start it, and it carries JSON lines between them and the running program.
//
// Two threads, one for each direction, block in the system's own calls: a line goes through with one read and one write,
// and a side that takes nothing holds up only what would go to it.

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include <sys/socket.h>
#include <unistd.h>

#include "relay/Copying.h"
#include "relay/Program.h"
#include "relay/RequestScan.h"

namespace {

using namespace relay;

constexpr int kInput = 0;
constexpr int kOutput = 1;
constexpr int kErrors = 2;

constexpr std::string_view kHelp = "Usage: morvelin-mcp [--start]\n"
                                   "Carries the lines of an MCP client between standard input and output and the\n"
                                   "running Morvelin.\n\n"
                                   "  --start    starts `morvelin serve` when Morvelin is not running\n"
                                   "  --version  prints the version\n"
                                   "  --help     prints this\n";

void tell(const std::string& sentence) { (void)writeAll(kErrors, "morvelin-mcp: " + sentence + "\n"); }

/// Until the program has no more to say. The exit status.
int relayLines(int socket) {
    const auto hasInputEnded = std::make_shared<std::atomic<bool>>(false);
    std::thread([socket, hasInputEnded] {
        if (copyLines(kInput, socket, LastLine::EndedProperly) == CopyEnd::TargetFailed) return;
        *hasInputEnded = true;
        (void)::shutdown(socket, SHUT_WR);
    }).detach(); // it may wait for input for ever; the end of the process ends it

    const CopyEnd end = copyLines(socket, kOutput, LastLine::AsItCame);
    if (end == CopyEnd::TargetFailed) {
        tell(std::string("The client no longer reads: ") + std::strerror(errno));
        return 1;
    }
    if (*hasInputEnded) return 0;
    tell("Morvelin has closed the connection. Requests that are not answered yet stay so; reconnect once it runs.");
    return 1;
}

/// Tells the client of each request that nobody is there, so that it can show it. Until the input ends.
void refuseRequests() {
    constexpr std::size_t kLongestLine = 0x100000;
    std::string line;
    const auto refuse = [&line] {
        const auto id = line.size() > kLongestLine ? std::string_view("null") : idToAnswer(line);
        if (!id || line.empty()) return true;
        return writeAll(kOutput, std::string(R"({"jsonrpc":"2.0","id":)")
                                     .append(*id)
                                     .append(R"(,"error":{"code":-32000,"message":"Morvelin is not running. )"
                                             R"(Open it or run morvelin serve, then reconnect."}})"
                                             "\n"));
    };
    char buffer[0x4000];
    for (ssize_t count = 0; (count = ::read(kInput, buffer, sizeof buffer)) != 0;) {
        if (count < 0 && errno != EINTR) return;
        for (const char c : std::string_view(buffer, count > 0 ? static_cast<std::size_t>(count) : 0)) {
            if (c != '\n') {
                if (line.size() <= kLongestLine) line += c;
                continue;
            }
            if (!refuse()) return;
            line.clear();
        }
    }
    (void)refuse();
}

} // namespace

int main(int count, char** arguments) {
    std::signal(SIGPIPE, SIG_IGN);
    bool mayStart = false;
    for (int i = 1; i < count; ++i) {
        const std::string_view argument = arguments[i];
        if (argument == "--help" || argument == "--version")
            return writeAll(kOutput, argument == "--help" ? kHelp : "morvelin-mcp " MORVELIN_VERSION "\n") ? 0 : 1;
        if (argument != "--start") {
            tell("There is no option \"" + std::string(argument) + "\"; --help lists them.");
            return 2;
        }
        mayStart = true;
    }

    const Places places = placesOfUser();
    std::string error;
    int socket = connectTo(places.socket, error);
    if (socket < 0 && mayStart) socket = startAndConnect(places, error);
    if (socket < 0) {
        tell(error);
        refuseRequests();
        return 1;
    }
    ::_exit(relayLines(socket));
}
