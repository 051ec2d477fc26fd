// The relay as a client runs it: a real process between pipes and a real server.

#include <algorithm>
#include <csignal>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <gmock/gmock.h>

#include "agent/MCPFixture.h"
#include "agent/MCPServer.h"
#include "base/TemporaryFolder.h"
#include "platform/null/MemoryDefaults.h"
#include "relay/RequestScan.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(RelayScan, FindsTheIdOfWhatWaitsForAnAnswer) {
    struct Case {
        std::string line;
        std::optional<std::string_view> id;
    };
    for (const Case& c : {
             Case{R"({"jsonrpc":"2.0","id":1,"method":"ping"})", "1"},
             {R"( { "method" : "ping" , "id" : "a\"b\u00e9é" } )"
              "\r",
              R"("a\"b\u00e9é")"},
             {R"({"method":"m","params":{"id":5,"x":["}",{"id":6}]},"id":-1.5e+7})", "-1.5e+7"},
             {R"({"id":1,"id":2,"method":"m"})", "2"},
             {R"({"id":true,"method":"m"})", "true"},
             {R"({"id":[1],"method":"m"})", "null"},
             {R"({"id":1,"id":{},"method":"m"})", "null"},
             {R"({"id":{},"id":1,"method":"m"})", "1"},
             {R"({"method":"notifications/x"})", std::nullopt},
             {R"({"id":null,"method":"m"})", std::nullopt},
             {R"({"id":3,"result":{}})", std::nullopt},
             {R"({"id":3,"method":7})", std::nullopt},
             {"{}", std::nullopt},
             {"", "null"},
             {"[]", "null"},
             {"not json", "null"},
             {R"({"id":1,"method":"m")", "null"},
             {R"({"id":1,"method":"m"} x)", "null"},
             {R"({"id":01,"method":"m"})", "null"},
             {R"({"id":"\x","method":"m"})", "null"},
             {R"({"id":"\ud83d\uDE00","method":"m"})", R"("\ud83d\uDE00")"},
             {R"({"id":"\ude00","method":"m"})", "null"},
             {R"({"id":"\ud83d!","method":"m"})", "null"},
             {R"({"id":"\u-012","method":"m"})", "null"},
             {"{\"id\":\"\xc0\xaf\",\"method\":\"m\"}", "null"},
             {"{\"id\":\"\xed\xa0\x80\",\"method\":\"m\"}", "null"},
             {R"({"id":1,"method":"m","params":[)", "null"},
             {R"({"id":1,,"method":"m"})", "null"},
         })
        EXPECT_EQ(relay::idToAnswer(c.line), c.id) << c.line;
}

/// A relay between pipes, in a home folder of its own.
class Relay {
public:
    Relay(const fs::path& program, const fs::path& home, std::vector<std::string> options = {}) {
        int in[2], out[2], err[2];
        EXPECT_EQ(::pipe2(in, O_CLOEXEC) + ::pipe2(out, O_CLOEXEC) + ::pipe2(err, O_CLOEXEC), 0);
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_adddup2(&files, in[0], 0);
        posix_spawn_file_actions_adddup2(&files, out[1], 1);
        posix_spawn_file_actions_adddup2(&files, err[1], 2);
        options.insert(options.begin(), program.string());
        std::vector<char*> arguments;
        for (std::string& option : options) arguments.push_back(option.data());
        arguments.push_back(nullptr);
        std::string setting = "HOME=" + home.string();
        char* environment[] = {setting.data(), nullptr};
        EXPECT_EQ(::posix_spawn(&m_process, program.c_str(), &files, nullptr, arguments.data(), environment), 0);
        posix_spawn_file_actions_destroy(&files);
        for (const int theirs : {in[0], out[1], err[1]}) ::close(theirs);
        m_input = OwnedDescriptor(in[1]);
        m_output = OwnedDescriptor(out[0]);
        m_errors = OwnedDescriptor(err[0]);
        for (const int ours : {in[1], out[0], err[0]}) ::fcntl(ours, F_SETFL, O_NONBLOCK);
    }
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;
    ~Relay() {
        if (m_process > 0) ::kill(m_process, SIGKILL);
        if (m_process > 0) ::waitpid(m_process, nullptr, 0);
    }

    void write(std::string_view bytes) {
        m_toWrite += bytes;
        pump();
    }
    void endInput() { m_input.close(); }
    void pump() {
        const ssize_t count = ::write(m_input.get(), m_toWrite.data(), m_toWrite.size());
        if (count > 0) m_toWrite.erase(0, static_cast<std::size_t>(count));
        drain(m_output, output);
        drain(m_errors, errors);
        int state = 0;
        if (m_process > 0 && ::waitpid(m_process, &state, WNOHANG) == m_process) {
            m_process = 0;
            status = WIFEXITED(state) ? WEXITSTATUS(state) : -WTERMSIG(state);
            drain(m_output, output);
            drain(m_errors, errors);
        }
    }
    [[nodiscard]] std::size_t unwritten() const { return m_toWrite.size(); }
    /// How many whole lines came, counted as they come: some are megabytes.
    [[nodiscard]] auto lineCount() {
        m_lines += std::count(output.begin() + m_counted, output.end(), '\n');
        m_counted = static_cast<std::ptrdiff_t>(output.size());
        return m_lines;
    }

    std::string output;
    std::string errors;
    std::optional<int> status; ///< once it has ended

private:
    static void drain(const OwnedDescriptor& from, std::string& into) {
        char buffer[0x10000];
        for (ssize_t count = 0; (count = ::read(from.get(), buffer, sizeof buffer)) > 0;)
            into.append(buffer, static_cast<std::size_t>(count));
    }

    pid_t m_process = 0;
    OwnedDescriptor m_input, m_output, m_errors;
    std::string m_toWrite;
    std::ptrdiff_t m_counted = 0;
    std::ptrdiff_t m_lines = 0;
};

class RelayProcess : public testing::Test {
protected:
    RelayProcess() { std::signal(SIGPIPE, SIG_IGN); }

    void serve() {
        MCPServerOptions options{mcpSocketURL(m_home.path())};
        options.limits = {.sending = std::chrono::seconds(20), .draining = 0.4_s};
        m_server.emplace(m_router, m_consent, m_loop, twoTools(), std::move(options));
        ASSERT_TRUE(m_server->start([](std::string_view) {}));
    }
    bool until(Relay& relay, const std::function<bool()>& isDone) {
        return runUntil(m_loop, [&] {
            relay.pump();
            return isDone();
        });
    }
    bool untilEnd(Relay& relay) {
        return until(relay, [&] { return relay.status.has_value(); });
    }

    const fs::path m_program = fs::path(MORVELIN_BINARY_DIR) / "morvelin-mcp";
    TemporaryFolder m_home;
    GLibEventLoop m_loop;
    ScriptedRouter m_router;
    MemoryDefaults m_defaults;
    MCPConsent m_consent{m_defaults, [](std::string, std::optional<std::string>) -> Task<bool> { co_return true; },
                         MCPConsent::Questions::OneAfterAnother, [](std::string_view) {}};
    std::optional<MCPServer> m_server;
};

const std::string kInitialize = R"({"id":0,"method":"initialize"})"
                                "\n";

TEST_F(RelayProcess, CarriesLinesBothWaysAndEndsWithItsInput) {
    serve();
    Relay relay(m_program, m_home.path());
    relay.write(kInitialize + R"({"id":1,"method":"tools/call","params":{"name":"echo","arguments":"é"}})"
                              "\n");
    EXPECT_TRUE(until(relay, [&] { return relay.lineCount() == 2; }));
    EXPECT_THAT(relay.output, AllOf(HasSubstr("2025-06-18"), HasSubstr(R"("arguments":"é")")));
    EXPECT_FALSE(relay.status);

    relay.write(R"({"id":2,"method":"ping"})"); // the last line lacks its end
    EXPECT_TRUE(until(relay, [&] { return relay.unwritten() == 0; }));
    relay.endInput();
    EXPECT_TRUE(untilEnd(relay));
    EXPECT_EQ(relay.status, 0);
    EXPECT_THAT(relay.output, testing::EndsWith("{\"jsonrpc\":\"2.0\",\"id\":2,\"result\":{}}\n"));
    EXPECT_EQ(relay.errors, "");
}

TEST_F(RelayProcess, DeliversTheAnswerToTheLastRequestBeforeItEnds) {
    serve();
    Relay relay(m_program, m_home.path());
    relay.write(kInitialize + R"({"id":1,"method":"tools/call","params":{"name":"wait"}})"
                              "\n");
    EXPECT_TRUE(until(relay, [&] { return m_router.calls == 1; }));
    relay.endInput();
    const auto soon = m_loop.after(0.2_s, [&] { m_router.released->give(true); });
    EXPECT_TRUE(untilEnd(relay));
    EXPECT_EQ(relay.status, 0);
    EXPECT_THAT(relay.output, HasSubstr("waited"));
}

TEST_F(RelayProcess, HoldsUpASideWhoseOtherEndTakesNothing) {
    serve();
    m_router.image = std::string(3'000'000, 'i');
    Relay relay(m_program, m_home.path());
    relay.write(kInitialize);
    EXPECT_TRUE(until(relay, [&] { return relay.lineCount() == 1; }));
    // Much more than pipes and sockets hold, both ways at once.
    const std::string blank = R"({"id":1,"method":"ping","params":")" + std::string(900'000, 'x') + "\"}\n";
    std::string all;
    for (int i = 0; i < 6; ++i)
        all += blank + R"({"id":2,"method":"tools/call","params":{"name":"image"}})"
                       "\n";
    relay.write(all);
    EXPECT_GT(relay.unwritten(), 4'000'000U);
    EXPECT_TRUE(until(relay, [&] { return relay.lineCount() == 13; }));
    EXPECT_GT(relay.output.size(), 24'000'000U);
    EXPECT_FALSE(relay.status);
}

TEST_F(RelayProcess, AnswersRequestsWithAnErrorWhenNothingRuns) {
    Relay relay(m_program, m_home.path());
    relay.write(R"({"id":"a/1","method":"initialize","params":{"id":9}})"
                "\n"
                R"({"method":"notifications/initialized"})"
                "\n\n"
                "no json\n"
                R"({"id":7,"method":"ping"})");
    EXPECT_TRUE(until(relay, [&] { return relay.unwritten() == 0; }));
    relay.endInput();
    EXPECT_TRUE(untilEnd(relay));
    EXPECT_EQ(relay.status, 1);
    EXPECT_THAT(relay.errors, AllOf(HasSubstr("Morvelin is not running: nothing answers at"), HasSubstr("mcp.sock")));
    std::vector<std::string> ids;
    for (std::size_t begin = 0, end = 0; (end = relay.output.find('\n', begin)) != std::string::npos; begin = end + 1) {
        const JSONValue reply = parseJSON(relay.output.substr(begin, end - begin)).value_or(JSONValue());
        EXPECT_THAT(reply.dump(), AllOf(HasSubstr("\"code\":-32000"), HasSubstr("Morvelin is not running.")));
        ids.push_back(reply.value("id", JSONValue("none")).dump());
    }
    EXPECT_THAT(ids, ElementsAre("\"a/1\"", "null", "7"));
}

TEST_F(RelayProcess, SaysThatTheProgramWentAway) {
    serve();
    Relay relay(m_program, m_home.path());
    relay.write(kInitialize);
    EXPECT_TRUE(until(relay, [&] { return relay.lineCount() == 1; }));
    m_server.reset();
    EXPECT_TRUE(untilEnd(relay));
    EXPECT_EQ(relay.status, 1);
    EXPECT_THAT(relay.errors, HasSubstr("Morvelin has closed the connection."));
}

TEST_F(RelayProcess, RefusesAPathThatNoSocketCanHave) {
    Relay relay(m_program, m_home.path() / std::string(100, 'h'));
    relay.endInput();
    EXPECT_TRUE(untilEnd(relay));
    EXPECT_EQ(relay.status, 1);
    EXPECT_THAT(relay.errors, HasSubstr("Socket path is too long for a UNIX domain socket: "));
}

TEST_F(RelayProcess, ExplainsItself) {
    for (const auto& [option, status] : {std::pair("--help", 0), {"--version", 0}, {"--nonsense", 2}}) {
        Relay relay(m_program, m_home.path(), {option});
        EXPECT_TRUE(untilEnd(relay));
        EXPECT_EQ(relay.status, status) << option;
        EXPECT_NE(relay.output + relay.errors, "") << option;
    }
}

/// A relay that lies beside a stand-in for the program: a script that notes how it was called.
class RelayStart : public RelayProcess {
protected:
    void install(const std::string& script) {
        fs::create_directories(m_bin);
        fs::copy_file(m_program, m_bin / "morvelin-mcp");
        put(m_bin / "morvelin", "#!/bin/sh\n" + script);
        fs::permissions(m_bin / "morvelin", fs::perms::owner_all);
    }
    const fs::path m_bin = m_home.path() / "bin";
    const fs::path m_folder = mcpSocketURL(m_home.path()).parent_path();
};

TEST_F(RelayStart, StartsTheProgramOnItsOwnAndWaitsForIt) {
    install("echo \"$0 $1\"; ps -o sid= -p $$; ls -l /proc/self/fd | wc -l; touch \"$HOME/called\"; sleep 20 & echo $! "
            "> \"$HOME/pid\"; wait\n");
    Relay relay(m_bin / "morvelin-mcp", m_home.path(), {"--start"});
    relay.write(kInitialize);
    EXPECT_TRUE(until(relay, [&] { return fs::exists(m_home.path() / "pid"); }));
    serve(); // what the script would have done
    EXPECT_TRUE(until(relay, [&] { return relay.lineCount() == 1; }));
    EXPECT_THAT(readFile(m_folder / "serve.log").value_or(""), HasSubstr((m_bin / "morvelin").string() + " serve"));
    relay.endInput();
    EXPECT_TRUE(untilEnd(relay));
    EXPECT_EQ(relay.status, 0);
    const int server = std::stoi(readFile(m_home.path() / "pid").value_or("0"));
    EXPECT_EQ(::kill(server, 0), 0) << "it lives on without the relay";
    ::kill(server, SIGKILL);
}

TEST_F(RelayStart, SaysWhyItCouldNot) {
    install("echo broken >&2; exit 3\n");
    Relay dying(m_bin / "morvelin-mcp", m_home.path(), {"--start"});
    dying.endInput();
    EXPECT_TRUE(untilEnd(dying));
    EXPECT_EQ(dying.status, 1);
    EXPECT_THAT(dying.errors, AllOf(HasSubstr("was started but does not answer"), HasSubstr("serve.log")));
    EXPECT_EQ(readFile(m_folder / "serve.log").value_or(""), "broken\n");

    fs::remove(m_bin / "morvelin");
    Relay missing(m_bin / "morvelin-mcp", m_home.path(), {"--start"});
    missing.endInput();
    EXPECT_TRUE(untilEnd(missing));
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.errors, HasSubstr("could not be started from"));
}

} // namespace
} // namespace morvelin
