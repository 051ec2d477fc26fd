// The server as agents meet it: real socket, real threads, real loop.

#include <gmock/gmock.h>

#include "agent/MCPFixture.h"
#include "agent/MCPServer.h"
#include "base/TemporaryFolder.h"
#include "platform/null/MemoryDefaults.h"

namespace morvelin {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

const std::string kInitialize = R"({"id":0,"method":"initialize","params":{"clientInfo":{"name":"Claude"}}})"
                                "\n";

class Server : public testing::Test {
protected:
    Server() {
        EXPECT_TRUE(m_server.start([this](std::string_view line) { m_log.emplace_back(line); }));
    }

    MCPServerOptions options() {
        return {m_folder.path() / "mcp.sock",
                "1.2",
                [this](const MCPConnection&) { return m_isTrusted; },
                {.draining = 0.3_s}};
    }
    bool until(const std::function<bool()>& isDone) { return runUntil(m_loop, isDone); }

    TemporaryFolder m_folder;
    GLibEventLoop m_loop;
    ScriptedRouter m_router;
    MemoryDefaults m_defaults;
    std::vector<std::shared_ptr<SharedAnswer<bool>>> m_questions;
    MCPConsent m_consent{m_defaults,
                         [this](std::string, std::optional<std::string>) -> Task<bool> {
                             const auto answer = m_questions.emplace_back(std::make_shared<SharedAnswer<bool>>());
                             co_return co_await answer->wait();
                         },
                         MCPConsent::Questions::OneAfterAnother, [](std::string_view) {}};
    bool m_isTrusted = false;
    std::vector<std::string> m_log;
    MCPServer m_server{m_router, m_consent, m_loop, twoTools(), options()};
};

TEST_F(Server, HoldsInitializeUntilTheUserHasAnsweredAndWorksForOthersMeanwhile) {
    EXPECT_THAT(m_log, ElementsAre("[Morvelin] MCP server listening at " + (m_folder.path() / "mcp.sock").string()));
    AgentEnd first(m_folder.path() / "mcp.sock");
    AgentEnd second(m_folder.path() / "mcp.sock");
    first.write(kInitialize);
    second.write(kInitialize);
    EXPECT_TRUE(until([&] { return m_questions.size() == 1; }));
    second.write("{\"id\":5,\"method\":\"ping\"}\n");
    EXPECT_TRUE(runUntilLines(m_loop, second, 1));
    EXPECT_EQ(second.lines(), std::vector<std::string>{R"({"jsonrpc":"2.0","id":5,"result":{}})"});
    EXPECT_EQ(first.received, "");

    m_questions.front()->give(true);
    EXPECT_TRUE(runUntilLines(m_loop, first, 1));
    EXPECT_TRUE(runUntilLines(m_loop, second, 2));
    EXPECT_THAT(first.lines().at(0), HasSubstr(R"("protocolVersion":"2025-06-18")"));
    EXPECT_THAT(second.lines().at(1), HasSubstr(R"("protocolVersion":"2025-06-18")"));
    EXPECT_EQ(m_questions.size(), 1U) << "one question for both";
}

TEST_F(Server, AnswersManyRequestsSentAtOnceInOrder) {
    m_isTrusted = true;
    AgentEnd agent(m_folder.path() / "mcp.sock");
    std::string requests = kInitialize;
    for (int i = 1; i < 2000; ++i) requests += R"({"id":)" + std::to_string(i) + ",\"method\":\"tools/list\"}\n\n";
    agent.write(requests);
    ASSERT_TRUE(runUntilLines(m_loop, agent, 2000));
    for (int i = 1; i < 2000; ++i)
        ASSERT_TRUE(agent.lines()[static_cast<std::size_t>(i)].starts_with(R"({"jsonrpc":"2.0","id":)" +
                                                                           std::to_string(i) + ","))
            << i;
}

TEST_F(Server, DropsTheReplyToACallWhoseClientHasGone) {
    m_isTrusted = true;
    AgentEnd gone(m_folder.path() / "mcp.sock");
    gone.write(kInitialize + R"({"id":1,"method":"tools/call","params":{"name":"wait"}})"
                             "\n");
    EXPECT_TRUE(until([&] { return m_router.calls == 1; }));
    gone.close();
    EXPECT_TRUE(until([&] { return m_server.connectionCount() == 0; }));
    m_router.released->give(true);

    AgentEnd next(m_folder.path() / "mcp.sock");
    next.write("{\"id\":1,\"method\":\"ping\"}\n");
    EXPECT_TRUE(runUntilLines(m_loop, next, 1));
}

TEST_F(Server, DeliversAReplyThatIsReadySoonAfterTheClientsLastLine) {
    m_isTrusted = true;
    AgentEnd agent(m_folder.path() / "mcp.sock");
    agent.write(kInitialize + R"({"id":1,"method":"tools/call","params":{"name":"wait"}})"
                              "\n");
    agent.finishWriting();
    EXPECT_TRUE(until([&] { return m_router.calls == 1; }));
    const auto soon = m_loop.after(0.1_s, [&] { m_router.released->give(true); });
    EXPECT_TRUE(runUntilEnd(m_loop, agent));
    ASSERT_EQ(agent.lines().size(), 2U);
    EXPECT_THAT(agent.lines()[1], AllOf(HasSubstr("\"id\":1"), HasSubstr("waited")));
}

TEST_F(Server, CarriesAnImageOfMegabytes) {
    m_isTrusted = true;
    m_router.image = std::string(6'000'000, '\xab');
    AgentEnd agent(m_folder.path() / "mcp.sock");
    agent.write(kInitialize + R"({"id":1,"method":"tools/call","params":{"name":"image"}})"
                              "\n");
    ASSERT_TRUE(runUntilLines(m_loop, agent, 2));
    const JSONValue reply = parseJSON(agent.lines()[1]).value_or(JSONValue());
    EXPECT_EQ(reply["result"]["content"][0]["data"].get_ref<const std::string&>().size(), 8'000'000U);
}

TEST_F(Server, StopsWithConnectionsOpenAndStartsAgain) {
    AgentEnd agent(m_folder.path() / "mcp.sock");
    EXPECT_TRUE(until([&] { return m_server.connectionCount() == 1; }));
    m_server.stop();
    EXPECT_TRUE(runUntilEnd(m_loop, agent));
    EXPECT_FALSE(m_server.isRunning());
    EXPECT_FALSE(std::filesystem::exists(m_folder.path() / "mcp.sock"));

    MCPServer other(m_router, m_consent, m_loop, twoTools(), options());
    EXPECT_TRUE(other.start([](std::string_view) {}));
    m_log.clear();
    EXPECT_FALSE(m_server.start([this](std::string_view line) { m_log.emplace_back(line); }));
    EXPECT_THAT(m_log,
                ElementsAre(HasSubstr("[Morvelin] MCP server unavailable: Another copy of Morvelin is already")));
}

} // namespace
} // namespace morvelin
