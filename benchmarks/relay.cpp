// An agent's calls through the relay and the server against a bare echo: a process that sends each line back over a UNIX
// socket. Round trips of a client, alternating in blocks, medians of one run. All processes share one processor: where
// the system puts them otherwise changes the times of either side by up to ten times from run to run.
//
//   bench-relay [ROUNDS]      default: 4000

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/format.h>

#include "agent/MCPServer.h"
#include "core/base/GLibEventLoop.h"
#include "platform/null/MemoryDefaults.h"

namespace {

using namespace morvelin;
namespace fs = std::filesystem;

constexpr int kBlock = 100;

[[noreturn]] void stop(const std::string& why) {
    fmt::print(stderr, "relay: {}\n", why);
    std::exit(1);
}

// ------------------------------------------------------------------------------------------ other processes

/// A child that runs a function, and is gone with this value or its parent.
class Child {
public:
    explicit Child(const std::function<void()>& work) : m_id(fork()) {
        if (m_id != 0) return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        work();
        _exit(0);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() {
        kill(m_id, SIGKILL);
        waitpid(m_id, nullptr, 0);
    }

private:
    pid_t m_id;
};

/// Writes all bytes; ends the process when it cannot.
void writeAll(int target, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(target, bytes.data(), bytes.size());
        if (count <= 0) stop("a pipe broke");
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

/// Reads up to and with the next line feed, which must be the last byte there is.
std::size_t readLine(int source, std::vector<char>& buffer) {
    for (std::size_t length = 0;;) {
        if (length == buffer.size()) buffer.resize(2 * length);
        const ssize_t count = read(source, buffer.data() + length, buffer.size() - length);
        if (count <= 0) stop("the other side went away");
        length += static_cast<std::size_t>(count);
        if (buffer[length - 1] == '\n') return length;
    }
}

[[noreturn]] void echoLines(int socket) {
    std::vector<char> buffer(0x10000);
    for (;;) {
        const std::size_t length = readLine(socket, buffer);
        writeAll(socket, {buffer.data(), length});
    }
}

class NoRouter final : public ToolRouter {
public:
    Task<MCPToolResult> call(std::string, JSONValue, std::string) override { co_return MCPToolResult::failed("none"); }
    std::vector<MCPResource> resources() override { return {}; }
    Result<JSONValue, std::string> readResource(const std::string&) override { return failure(std::string("none")); }
};

void serve(const fs::path& home) {
    GLibEventLoop loop;
    NoRouter router;
    MemoryDefaults defaults;
    const Log silent = [](std::string_view) {};
    MCPConsent consent(
        defaults, [](std::string, std::optional<std::string>) -> Task<bool> { co_return true; },
        MCPConsent::Questions::SideBySide, silent);
    MCPServerOptions options;
    options.socket = mcpSocketURL(home);
    MCPServer server(router, consent, loop, toolCatalogue(), std::move(options));
    if (!server.start(standardErrorLog())) stop("the server did not start");
    loop.run();
}

// ------------------------------------------------------------------------------------------ the client

/// Where a client writes its lines and reads the answers.
struct Line {
    int input = -1;
    int output = -1;
    std::vector<char> buffer = std::vector<char>(0x10000);

    std::size_t exchange(std::string_view request) {
        writeAll(input, request);
        return readLine(output, buffer);
    }
};

Line startRelay(const fs::path& program, const fs::path& home) {
    int in[2], out[2];
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) stop("no pipes");
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, in[0], 0);
    posix_spawn_file_actions_adddup2(&files, out[1], 1);
    std::string name = program.string(), setting = "HOME=" + home.string();
    char* arguments[] = {name.data(), nullptr};
    char* environment[] = {setting.data(), nullptr};
    pid_t id = 0;
    if (posix_spawn(&id, program.c_str(), &files, nullptr, arguments, environment) != 0) stop("no relay");
    posix_spawn_file_actions_destroy(&files);
    close(in[0]);
    close(out[1]);
    return {in[1], out[0]};
}

double microseconds(Line& line, std::string_view request) {
    const auto start = std::chrono::steady_clock::now();
    line.exchange(request);
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

/// Both round trips in turns, so that what else the machine does meets both.
void report(const char* name, double goal, Line& ours, std::string_view request, Line& rival, std::string_view echoed,
            int rounds) {
    std::vector<double> oursTimes, rivalTimes;
    for (int i = -kBlock; i < rounds; i += kBlock) {
        for (int k = 0; k < kBlock; ++k)
            if (const double time = microseconds(rival, echoed); i >= 0) rivalTimes.push_back(time);
        for (int k = 0; k < kBlock; ++k)
            if (const double time = microseconds(ours, request); i >= 0) oursTimes.push_back(time);
    }
    const double mine = median(oursTimes), theirs = median(rivalTimes);
    fmt::print("{:<44}{:7.2f} of a bare echo (goal {:g}): {:.1f} against {:.1f} µs\n", name, mine / theirs, goal, mine,
               theirs);
}

} // namespace

int main(int count, char** arguments) {
    cpu_set_t processor;
    CPU_ZERO(&processor);
    CPU_SET(sched_getcpu(), &processor);
    if (sched_setaffinity(0, sizeof processor, &processor) != 0) stop("no processor of its own");
    const int rounds = count > 1 ? std::atoi(arguments[1]) : 4000;
    std::signal(SIGPIPE, SIG_IGN);
    const fs::path own = fs::read_symlink("/proc/self/exe").parent_path();
    std::string folder = (fs::temp_directory_path() / "morvelin-bench-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) stop("no folder");
    const fs::path home = folder;

    int pair[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) stop("no sockets");
    const Child echo([&] {
        close(pair[0]);
        echoLines(pair[1]);
    });
    close(pair[1]);
    const Child server([&] { serve(home); });
    while (!fs::exists(mcpSocketURL(home))) usleep(1000);
    usleep(100'000);

    Line rival{pair[0], pair[0]};
    Line ours = startRelay(own / "morvelin-mcp", home);
    ours.exchange(R"({"id":0,"method":"initialize","params":{"clientInfo":{"name":"bench"}}})"
                  "\n");

    const std::string ping = R"({"jsonrpc":"2.0","id":1,"method":"ping"})"
                             "\n";
    report("ping", 3, ours, ping, rival, ping, rounds);
    const std::string list = R"({"jsonrpc":"2.0","id":1,"method":"tools/list"})"
                             "\n";
    const std::string asMuch = std::string(ours.exchange(list) - 1, 'x').append("\n");
    report(fmt::format("tools/list, {} bytes", asMuch.size()).c_str(), 5, ours, list, rival, asMuch, rounds);
    fs::remove_all(home);
}
