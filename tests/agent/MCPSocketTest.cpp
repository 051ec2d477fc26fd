// The socket itself: who may own it, what a line is, and what becomes of peers that misbehave.

#include <algorithm>
#include <fstream>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <gmock/gmock.h>

#include "agent/LineCutter.h"
#include "agent/MCPFixture.h"
#include "agent/MCPSocketListener.h"
#include "agent/PeerProcess.h"
#include "base/TemporaryFolder.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::ElementsAre;

constexpr std::size_t kLongestLine = 1'048'576;

/// How many entries a folder of /proc/self has: descriptors or threads of this process.
std::ptrdiff_t countOf(const char* what) {
    return std::distance(fs::directory_iterator(std::string("/proc/self/") + what), fs::directory_iterator());
}

mode_t modeOf(const fs::path& path) {
    struct stat facts {};
    EXPECT_EQ(::stat(path.c_str(), &facts), 0) << path;
    return facts.st_mode & 0777;
}

TEST(Lines, AreCutWhereverTheBytesFallApart) {
    struct Case {
        std::vector<std::string> parts;
        std::vector<std::string> lines;
        bool isOverLimit;
    };
    for (const Case& c : {
             Case{{"one\ntwo\n"}, {"one", "two"}, false},
             {{"on", "e", "\n"}, {"one"}, false},
             {{"\n\n\none\n\n"}, {"one"}, false},
             {{"\r\n"}, {"\r"}, false},
             {{"12345678", "\n"}, {"12345678"}, false},
             {{"ok\n12345678", "9"}, {"ok"}, true},
             {{"ok\n123456789\nnever\n"}, {"ok"}, true},
             {{"a", "\nb\nc", "\n"}, {"a", "b", "c"}, false},
         }) {
        LineCutter cutter(8);
        std::vector<std::string> lines;
        for (const std::string& part : c.parts) {
            cutter.append(part);
            while (auto line = cutter.next()) lines.push_back(*line);
        }
        EXPECT_EQ(lines, c.lines) << c.parts.front();
        EXPECT_EQ(cutter.isOverLimit(), c.isOverLimit) << c.parts.front();
    }
}

class Listener : public testing::Test {
protected:
    std::unique_ptr<MCPSocketListener> listener(MCPConnectionLimits limits = {}) {
        auto made = std::make_unique<MCPSocketListener>(m_url, m_loop, limits);
        made->onConnection([this](std::shared_ptr<MCPConnection> connection) {
            connection->onLine([this](std::string line) { m_lines.push_back(std::move(line)); });
            connection->onClosed([this, key = connection.get()] {
                std::erase_if(m_connections, [&](const auto& each) { return each.get() == key; });
                ++m_closed;
            });
            m_connections.push_back(connection);
            connection->start();
        });
        return made;
    }
    std::string failureOf(MCPSocketListener& listener) {
        const auto started = listener.start();
        return started ? "started" : started.error().description();
    }
    bool until(const std::function<bool()>& isDone) { return runUntil(m_loop, isDone); }
    /// A started listener and an agent with its connection.
    AgentEnd connected(MCPSocketListener& to) {
        EXPECT_EQ(failureOf(to), "started");
        AgentEnd agent(m_url);
        EXPECT_TRUE(until([&] { return !m_connections.empty(); }));
        return agent;
    }

    TemporaryFolder m_folder;
    GLibEventLoop m_loop;
    fs::path m_url = m_folder.path() / "mcp.sock";
    std::vector<std::shared_ptr<MCPConnection>> m_connections;
    std::vector<std::string> m_lines;
    int m_closed = 0;
};

TEST_F(Listener, MakesItsFoldersAndSocketForTheUserAlone) {
    m_url = mcpSocketURL(m_folder.path());
    EXPECT_EQ(m_url, m_folder.path() / "Library/Application Support/Morvelin/mcp.sock");
    const auto ours = listener();
    EXPECT_FALSE(fs::exists(m_url.parent_path())) << "nothing before the start";
    EXPECT_EQ(failureOf(*ours), "started");
    for (fs::path folder = m_url.parent_path(); folder != m_folder.path(); folder = folder.parent_path())
        EXPECT_EQ(modeOf(folder), 0700U) << folder;
    EXPECT_EQ(modeOf(m_url), 0600U);
    ours->stop();
    EXPECT_FALSE(fs::exists(m_url));
    EXPECT_EQ(failureOf(*ours), "started") << "once more";
}

TEST_F(Listener, LeavesALiveSocketAloneAndReplacesADeadOne) {
    auto first = listener();
    EXPECT_EQ(failureOf(*first), "started");
    const auto second = listener();
    EXPECT_EQ(failureOf(*second), "Another copy of Morvelin is already serving agents at " + m_url.string() +
                                      ". Quit it and reopen this one to take over.");
    second->stop();
    EXPECT_TRUE(AgentEnd(m_url).isConnected()) << "the first one still serves";

    // A killed copy leaves its file: the name stays when it is moved away while the listener ends.
    fs::rename(m_url, m_folder.path() / "kept");
    first.reset();
    fs::rename(m_folder.path() / "kept", m_url);
    EXPECT_FALSE(AgentEnd(m_url).isConnected());
    EXPECT_EQ(failureOf(*second), "started");
    EXPECT_TRUE(AgentEnd(m_url).isConnected());
}

TEST_F(Listener, RemovesOnlyItsOwnFile) {
    const auto first = listener();
    EXPECT_EQ(failureOf(*first), "started");
    fs::remove(m_url);
    const auto second = listener();
    EXPECT_EQ(failureOf(*second), "started") << "somebody removed the file of the first";
    first->stop();
    EXPECT_TRUE(AgentEnd(m_url).isConnected());
}

TEST_F(Listener, TakesAPathOf103BytesAndNoLonger) {
    const std::size_t missing = 103 - m_folder.path().native().size() - 1;
    m_url = m_folder.path() / std::string(missing, 'x');
    EXPECT_EQ(failureOf(*listener()), "started");
    m_url += "x";
    EXPECT_EQ(failureOf(*listener()), "Socket path is too long for a UNIX domain socket: " + m_url.string());
    EXPECT_FALSE(fs::exists(m_url));
}

TEST_F(Listener, SaysInASentenceWhyItCannotListen) {
    put(m_folder.path() / "file", "");
    m_url = m_folder.path() / "file" / "Morvelin" / "mcp.sock";
    EXPECT_THAT(failureOf(*listener()), testing::HasSubstr("Not a directory"));
    m_url = m_folder.path() / "mcp.sock";
    fs::create_directory(m_url);
    put(m_url / "inside", "");
    EXPECT_EQ(failureOf(*listener()), "bind failed: Address already in use");
    m_url = "/proc/nowhere/mcp.sock";
    EXPECT_THAT(failureOf(*listener()), testing::HasSubstr("/proc/nowhere"));
}

TEST_F(Listener, ClosesWhatNobodyWantsAndKeepsNothingOfTheRest) {
    const auto unwanted = std::make_unique<MCPSocketListener>(m_url, m_loop);
    EXPECT_EQ(failureOf(*unwanted), "started");
    AgentEnd alone(m_url);
    EXPECT_TRUE(runUntilEnd(m_loop, alone));
    alone.close();
    unwanted->stop();

    const auto wanted = listener({.draining = 0.3_s});
    EXPECT_EQ(failureOf(*wanted), "started");
    const auto descriptors = countOf("fd");
    const auto threads = countOf("task");
    for (int i = 0; i < 200; ++i) {
        AgentEnd agent(m_url);
        ASSERT_TRUE(agent.isConnected()) << i;
        if (i % 3 == 0) agent.write("a line\n");
        if (i % 3 == 1) agent.write("half a li");
    }
    EXPECT_TRUE(until([&] { return m_closed == 200; })) << m_closed;
    EXPECT_EQ(m_lines.size(), 67U);
    EXPECT_EQ(countOf("fd"), descriptors);
    EXPECT_EQ(countOf("task"), threads);
}

TEST_F(Listener, SurvivesAShortageOfDescriptorsWithoutSpinning) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "The sanitizers' own check of an object needs a descriptor, and takes their lack for a fault.";
#endif
    const auto ours = listener();
    EXPECT_EQ(failureOf(*ours), "started");
    AgentEnd agent{OwnedDescriptor()};
    const auto held = [&] {
        rlimit before{};
        ::getrlimit(RLIMIT_NOFILE, &before);
        // Room for the agent's own end alone: to accept it there is none.
        const auto next = static_cast<rlim_t>(OwnedDescriptor(::dup(0)).get());
        const rlimit tight{next + 1, before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &tight);
        agent = AgentEnd(m_url);
        const std::clock_t start = std::clock();
        runFor(m_loop, Seconds(0.3));
        const double busy = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        ::setrlimit(RLIMIT_NOFILE, &before);
        return busy;
    }();
    EXPECT_TRUE(m_connections.empty());
    EXPECT_LT(held, 0.15) << "processor seconds in 0.3 s of waiting";
    EXPECT_TRUE(until([&] { return !m_connections.empty(); })) << "taken once there is room";
}

TEST_F(Listener, DeliversTheLongestLineAndCutsOffALongerOne) {
    const auto ours = listener();
    AgentEnd agent = connected(*ours);
    const std::string longest(kLongestLine, 'x');
    agent.write("\n" + longest + "\nnext\n");
    EXPECT_TRUE(until([&] {
        agent.pump();
        return m_lines.size() == 2;
    }));
    EXPECT_TRUE(m_lines.at(0) == longest);
    EXPECT_EQ(m_lines.at(1), "next");

    agent.write(longest + "x\nnever\n");
    EXPECT_TRUE(runUntilEnd(m_loop, agent));
    EXPECT_EQ(agent.received, "");
    EXPECT_TRUE(until([&] { return m_closed == 1; }));
    EXPECT_EQ(m_lines.size(), 2U);

    AgentEnd endless(m_url);
    endless.write(longest + "x");
    EXPECT_TRUE(runUntilEnd(m_loop, endless)) << "no line feed at all";
}

TEST_F(Listener, WritesRepliesInOrderToASlowReaderWithoutHoldingUpTheLoop) {
    const auto ours = listener();
    AgentEnd agent = connected(*ours);
    const std::string large(8'000'000, 'y');
    const auto start = std::chrono::steady_clock::now();
    m_connections.front()->send(large + "\n");
    m_connections.front()->send("");
    m_connections.front()->send("small\n");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 200ms);
    EXPECT_TRUE(runUntilLines(m_loop, agent, 2));
    EXPECT_TRUE(agent.lines().at(0) == large);
    EXPECT_EQ(agent.lines().at(1), "small");
}

TEST_F(Listener, CutsOffAPeerThatNeverReads) {
    const auto ours = listener({.sending = 150ms});
    AgentEnd agent = connected(*ours);
    agent.reads = false;
    for (int i = 0; i < 3; ++i) m_connections.front()->send(std::string(1'000'000, 'z'));
    EXPECT_TRUE(until([&] { return m_closed == 1; }));
    EXPECT_TRUE(m_connections.empty());
}

TEST_F(Listener, LeavesAPeerWaitingThatAsksFasterThanItIsHeard) {
    const auto ours = listener({.sending = 60s});
    AgentEnd agent = connected(*ours);
    agent.reads = false;
    m_connections.front()->send(std::string(6 << 20, 'z'));
    agent.write(std::string(kLongestLine, 'x').append("\n"));
    runFor(m_loop, Seconds(0.1));
    EXPECT_FALSE(agent.hasWrittenAll()) << "more than the socket holds was taken from it";
    agent.reads = true;
    EXPECT_TRUE(until([&] {
        agent.pump();
        return m_lines.size() == 1;
    })) << "and goes on once it reads";
}

TEST_F(Listener, SendsWhatIsReadyInTimeAfterThePeersLastLine) {
    const auto ours = listener({.draining = 0.3_s});
    AgentEnd quick = connected(*ours);
    quick.write("question\nhalf a li");
    quick.finishWriting();
    EXPECT_TRUE(until([&] { return m_lines.size() == 1; }));
    m_connections.front()->send("answer\n");
    EXPECT_TRUE(runUntilEnd(m_loop, quick));
    EXPECT_EQ(quick.received, "answer\n");
    EXPECT_TRUE(until([&] { return m_connections.empty(); }));
    EXPECT_THAT(m_lines, ElementsAre("question"));

    AgentEnd late(m_url);
    EXPECT_TRUE(until([&] { return !m_connections.empty(); }));
    const auto connection = m_connections.front();
    late.finishWriting();
    EXPECT_TRUE(runUntilEnd(m_loop, late));
    connection->send("too late\n");
    EXPECT_EQ(late.received, "");
}

TEST_F(Listener, ClosesAtOnceWhenAsked) {
    const auto ours = listener();
    AgentEnd agent = connected(*ours);
    const auto connection = m_connections.front();
    connection->close();
    connection->close();
    connection->send("dropped\n");
    EXPECT_TRUE(runUntilEnd(m_loop, agent));
    EXPECT_TRUE(until([&] { return m_closed == 1; }));
    EXPECT_EQ(agent.received, "");
}

TEST_F(Listener, KnowsAnotherRunOfThisProgramByItsExecutable) {
    const auto ours = listener();
    EXPECT_EQ(failureOf(*ours), "started");
    AgentEnd own(m_url);
    EXPECT_TRUE(until([&] { return m_connections.size() == 1; }));
    EXPECT_TRUE(m_connections.back()->isOwnProgram());

    // The relay is another program, whatever its client calls itself.
    const fs::path home = m_folder.path() / "home";
    put(mcpSocketURL(home).parent_path() / "x", "");
    fs::create_symlink(m_url, mcpSocketURL(home));
    const std::string command = "HOME='" + home.string() + "' " MORVELIN_BINARY_DIR "/morvelin-mcp </dev/null &";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_TRUE(until([&] { return m_connections.size() == 2; }));
    EXPECT_FALSE(m_connections.back()->isOwnProgram());
}

} // namespace
} // namespace morvelin
