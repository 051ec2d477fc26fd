// demo-agent: plays an agent's session over the relay, with its pauses for thought: demo-agent RELAY SCRIPT
// A line of the script is a tool and its arguments as JSON, or "think SECONDS", or empty, or a comment after "#".
// The files that the export makes are printed.
#include <chrono>
#include <cstdio>
#include <expected>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <thread>

#include <fcntl.h>
#include <fmt/core.h>
#include <nlohmann/json.hpp>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace morvelin {
namespace {

using Json = nlohmann::json;
using Answer = std::expected<Json, std::string>;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// The client's end of the protocol: one request at a time, its answer a line.
class Client {
public:
    static std::expected<Client, std::string> start(const char* relay) {
        int toRelay[2];
        int fromRelay[2];
        if (pipe2(toRelay, O_CLOEXEC) != 0 || pipe2(fromRelay, O_CLOEXEC) != 0)
            return std::unexpected("There are no pipes left.");
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, toRelay[0], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, fromRelay[1], STDOUT_FILENO);
        std::string path = relay;
        char* arguments[] = {path.data(), nullptr};
        Client client;
        const int error = posix_spawn(&client.m_relay, relay, &actions, nullptr, arguments, environ);
        posix_spawn_file_actions_destroy(&actions);
        close(toRelay[0]);
        close(fromRelay[1]);
        client.m_out.reset(fdopen(toRelay[1], "w"));
        client.m_in.reset(fdopen(fromRelay[0], "r"));
        if (error != 0) return std::unexpected(fmt::format("{} can't be run.", path));
        return client;
    }

    Client(Client&& other) noexcept
        : m_relay(std::exchange(other.m_relay, -1)),
          m_out(std::move(other.m_out)),
          m_in(std::move(other.m_in)) {}
    Client& operator=(Client&&) = delete;
    ~Client() {
        m_out.reset(); // the relay ends with its input
        if (m_relay > 0) waitpid(m_relay, nullptr, 0);
    }

    Answer request(const char* method, Json params) {
        Json message = {{"jsonrpc", "2.0"}, {"id", ++m_lastId}, {"method", method}};
        message["params"] = std::move(params);
        fmt::print(m_out.get(), "{}\n", message.dump());
        std::fflush(m_out.get());
        char* line = nullptr;
        std::size_t space = 0;
        const ssize_t length = getline(&line, &space, m_in.get());
        const std::string text(line, length > 0 ? static_cast<std::size_t>(length) : 0);
        std::free(line);
        const Json answer = Json::parse(text, nullptr, false);
        if (answer.contains("result")) return answer["result"];
        return std::unexpected(answer.contains("error") ? answer["error"].value("message", "")
                                                        : "The relay fell silent.");
    }

    /// The facts that a tool gives.
    Answer call(const std::string& tool, Json arguments) {
        Json params = {{"name", tool}};
        params["arguments"] = std::move(arguments);
        const Answer result = request("tools/call", std::move(params));
        if (!result) return result;
        if (result->value("isError", true)) return std::unexpected((*result)["content"].back().value("text", ""));
        return result->value("structuredContent", Json::object());
    }

private:
    Client() = default;

    pid_t m_relay = -1;
    File m_out;
    File m_in;
    int m_lastId = 0;
};

void think(double seconds) {
    fmt::print(stderr, "  … thinks for {} s\n", seconds);
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

std::expected<void, std::string> playLine(Client& client, const std::string& line) {
    const std::string tool = line.substr(0, line.find(' '));
    const std::string rest = line.size() > tool.size() ? line.substr(tool.size() + 1) : "";
    if (tool == "think") {
        think(std::atof(rest.c_str()));
        return {};
    }
    Json arguments = rest.empty() ? Json::object() : Json::parse(rest, nullptr, false);
    if (!arguments.is_object()) return std::unexpected("the arguments are no JSON object");
    fmt::print(stderr, "  ▸ {}\n", line);
    const Answer facts = client.call(tool, std::move(arguments));
    if (!facts) return std::unexpected(facts.error());
    for (const char* file : {"project", "video", "events", "transcript"})
        if (tool == "export" && facts->contains(file)) fmt::print("{}\n", (*facts)[file].get<std::string>());
    return {};
}

std::expected<void, std::string> play(const char* relay, const char* script) {
    std::ifstream lines(script);
    if (!lines) return std::unexpected(fmt::format("Cannot read {}.", script));
    auto client = Client::start(relay);
    if (!client) return std::unexpected(client.error());
    const Json own = {{"name", "Demo agent"}, {"version", "1"}};
    const Answer hello = client->request("initialize", {{"protocolVersion", "2025-06-18"}, {"clientInfo", own}});
    if (!hello) return std::unexpected(hello.error());

    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        if (line.empty() || line.front() == '#') continue;
        if (auto played = playLine(*client, line); !played)
            return std::unexpected(fmt::format("{}, line {}: {}", script, number, played.error()));
    }
    return {};
}

} // namespace
} // namespace morvelin

int main(int argc, char** argv) {
    if (argc != 3) {
        fmt::print(stderr, "Usage: demo-agent RELAY SCRIPT\n");
        return 2;
    }
    if (const auto played = morvelin::play(argv[1], argv[2]); !played) {
        fmt::print(stderr, "demo-agent: {}\n", played.error());
        return 1;
    }
    return 0;
}
