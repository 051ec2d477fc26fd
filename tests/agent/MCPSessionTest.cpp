// What a session answers, line by line, on a connection of strings.

#include <gmock/gmock.h>

#include "agent/MCPReply.h"
#include "agent/MCPSession.h"
#include "agent/MCPFixture.h"
#include "core/base/SimulatedEventLoop.h"
#include "platform/null/MemoryDefaults.h"

namespace morvelin {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class Session : public testing::Test {
protected:
    Session() {
        m_facts = std::make_shared<MCPServerFacts>(MCPServerFacts{initializeResult("2.5"), toolListResult(twoTools())});
    }

    MCPConsent::Presenter presenter() {
        return [this](std::string name, std::optional<std::string> version) -> Task<bool> {
            m_asked.push_back(name + "/" + version.value_or("-"));
            co_return m_answer;
        };
    }
    MCPSession session(MCPPeer peer = MCPPeer::Client) { return {m_router, m_consent, m_facts, peer}; }

    /// Sends a line; what the session replies, now or later, ends up in `m_replies`.
    void send(MCPSession& to, std::string line) {
        const auto keep = [](MCPSession& asked, std::string text, std::vector<std::string>& replies) -> Task<void> {
            if (auto reply = co_await asked.reply(std::move(text))) replies.push_back(std::move(*reply));
        };
        m_loop.spawn(keep(to, std::move(line), m_replies));
    }
    JSONValue replyTo(MCPSession& to, std::string line) {
        m_replies.clear();
        send(to, std::move(line));
        if (m_replies.size() != 1) return "there were " + std::to_string(m_replies.size()) + " replies";
        EXPECT_EQ(m_replies[0].find('\n'), m_replies[0].size() - 1) << "one line";
        return parseJSON(m_replies[0]).value_or(JSONValue("no JSON: " + m_replies[0]));
    }
    JSONValue resultOf(MCPSession& to, const std::string& method, const JSONValue& params = {}) {
        return replyTo(to, JSONValue{{"id", 1}, {"method", method}, {"params", params}}.dump())
            .value("result", JSONValue());
    }
    void initialize(MCPSession& to) { resultOf(to, "initialize", {{"clientInfo", {{"name", "Claude"}}}}); }

    SimulatedEventLoop m_loop;
    ScriptedRouter m_router;
    MemoryDefaults m_defaults;
    bool m_answer = true;
    std::vector<std::string> m_asked;
    MCPConsent m_consent{m_defaults, presenter(), MCPConsent::Questions::OneAfterAnother, [](std::string_view) {}};
    std::shared_ptr<const MCPServerFacts> m_facts;
    std::vector<std::string> m_replies;
};

TEST_F(Session, AnswersProtocolFaultsWithTheirCodes) {
    struct Case {
        std::string line;
        const char* reply;
    };
    const std::string deep = R"({"id":1,"method":"ping","params":)" + std::string(600, '[') + std::string(600, ']') +
                             "}";
    constexpr const char* kUnreadable =
        R"({"error":{"code":-32700,"message":"Message is not valid JSON-RPC."},"id":null,"jsonrpc":"2.0"})";
    MCPSession fresh = session();
    for (
        const Case& c : {
            Case{"not json", kUnreadable},
            {"[]", kUnreadable},
            {"\r", kUnreadable},
            {"5", kUnreadable},
            {R"({"id":1,"method":5})", kUnreadable},
            {R"({"id":1e999,"method":"ping"})", kUnreadable},
            {"{\"id\":\"\xff\",\"method\":\"ping\"}", kUnreadable},
            {R"({"id":1,"method":"ping"} {})", kUnreadable},
            {deep, kUnreadable},
            {std::string("{\"id\":1,\"method\":\"ping\"}\0x", 26), kUnreadable},
            {R"({"id":"a","method":"nope"})",
             R"({"error":{"code":-32601,"message":"Unknown method “nope”."},"id":"a","jsonrpc":"2.0"})"},
            {R"({"id":2,"method":"tools/list"})",
             R"({"error":{"code":-32600,"message":"Call initialize first, and have the user allow “an MCP client” to control Morvelin."},"id":2,"jsonrpc":"2.0"})"},
        })
        EXPECT_EQ(replyTo(fresh, c.line), JSONValue::parse(c.reply)) << c.line;
    EXPECT_EQ(m_router.calls, 0);
}

TEST_F(Session, EchoesAnIdOfAnyTypeAsItCame) {
    MCPSession fresh = session();
    for (const std::string id :
         {"0", "-7", "9007199254740993", "1.5", "\"\"", "\"é/\\n\"", "true", "[1,2]", "{\"a\":null}"}) {
        replyTo(fresh, R"({"jsonrpc":"1.0","id":)" + id + R"(,"method":"ping","_meta":{"x":1}})");
        EXPECT_EQ(m_replies.at(0), R"({"jsonrpc":"2.0","id":)" + id + ",\"result\":{}}\n");
    }
    EXPECT_EQ(replyTo(fresh, R"({"id":1,"id":2,"method":"ping"})").at("id"), 2) << "the last of two members counts";
}

TEST_F(Session, IsSilentToNotificationsAndReplies) {
    MCPSession fresh = session();
    for (const char* line : {
             R"({"jsonrpc":"2.0","method":"tools/list"})",
             R"({"id":null,"method":"tools/call","params":{"name":"echo"}})",
             R"({"method":"notifications/initialized"})",
             R"({"method":"nope"})",
             R"({"id":1})",
             R"({"id":1,"method":null})",
             R"({"id":1,"result":{}})",
             "{}",
         })
        send(fresh, line);
    EXPECT_THAT(m_replies, ElementsAre());
    EXPECT_EQ(m_router.calls, 0);
}

TEST_F(Session, InitializeTellsWhatTheServerIsAndNegotiatesNothing) {
    MCPSession client = session();
    const JSONValue params{{"protocolVersion", "1999-01-01"}, {"clientInfo", {{"name", "Claude"}, {"version", "3"}}}};
    EXPECT_EQ(resultOf(client, "initialize", params), JSONValue::parse(R"({
        "protocolVersion": "2025-06-18",
        "capabilities": {"tools": {}, "resources": {}},
        "serverInfo": {"name": "morvelin", "version": "2.5"}})"));
    EXPECT_TRUE(client.isAuthorized());
    EXPECT_THAT(m_asked, ElementsAre("Claude/3"));
}

TEST_F(Session, InitializeTakesTheNameOfAClientOnlyWhenItIsAText) {
    struct Case {
        const char* params;
        const char* asked;
    };
    for (const Case& c : {
             Case{R"({"clientInfo":5})", "an MCP client/-"},
             {R"({"clientInfo":{"name":7,"version":"1"}})", "an MCP client/1"},
             {R"([{"clientInfo":{"name":"x"}}])", "an MCP client/-"},
             {"null", "an MCP client/-"},
             {R"({"clientInfo":{"name":"","version":2}})", "/-"},
         }) {
        m_asked.clear();
        m_defaults.clear();
        MCPSession client = session();
        resultOf(client, "initialize", JSONValue::parse(c.params));
        EXPECT_THAT(m_asked, ElementsAre(c.asked)) << c.params;
    }
}

TEST_F(Session, AskAgainAfterARefusalAndKeepTheNameForLater) {
    m_answer = false;
    MCPSession client = session();
    const std::string initialize = R"({"id":1,"method":"initialize","params":{"clientInfo":{"name":"Codex"}}})";
    const JSONValue refused = replyTo(client, initialize);
    EXPECT_EQ(refused.at("error"),
              (JSONValue{{"code", -32600},
                         {"message", "The user declined to let “Codex” control Morvelin. Grant access from the "
                                     "Morvelin menu bar icon, then reconnect."}}));
    EXPECT_THAT(replyTo(client, R"({"id":1,"method":"tools/call","params":{"name":"echo"}})").dump(),
                HasSubstr("have the user allow “Codex”"));
    EXPECT_EQ(resultOf(client, "prompts/list"), JSONValue::parse(R"({"prompts":[]})"));

    m_answer = true;
    EXPECT_TRUE(replyTo(client, initialize).contains("result"));
    EXPECT_THAT(m_asked, ElementsAre("Codex/-", "Codex/-"));
    EXPECT_TRUE(resultOf(client, "tools/list").contains("tools"));
}

TEST_F(Session, OwnProgramIsNotAskedAboutButANameAloneOpensNothing) {
    m_answer = false;
    MCPSession own = session(MCPPeer::OwnProgram);
    MCPSession stranger = session();
    const std::string line = R"({"id":1,"method":"initialize","params":{"clientInfo":{"name":"morvelin"}}})";
    EXPECT_TRUE(replyTo(own, line).contains("result"));
    EXPECT_THAT(m_asked, ElementsAre());
    EXPECT_TRUE(replyTo(stranger, line).contains("error"));
}

TEST_F(Session, ListsToolsAndResourcesInTheirOrder) {
    MCPSession client = session();
    initialize(client);
    EXPECT_EQ(resultOf(client, "tools/list", {{"cursor", "x"}}), JSONValue::parse(R"({"tools":[
        {"name":"zoom","description":"Zooms.","inputSchema":{"type":"object"}},
        {"name":"cut","description":"Cuts “here”.","inputSchema":{"type":"object"}}]})"));
    EXPECT_EQ(resultOf(client, "resources/list"), JSONValue::parse(R"({"resources":[{"uri":"morvelin://projects",
        "name":"Morvelin projects","description":"Every .morvelin recording.","mimeType":"application/json"}]})"));
}

TEST_F(Session, CallsATool) {
    struct Case {
        const char* params;
        const char* result;
    };
    MCPSession client = session();
    initialize(client);
    m_router.image = std::string("\x00\xff\xfe\x89PNG/", 8);
    for (
        const Case& c : {
            Case{
                R"({"name":"echo","arguments":[1.0,"/"]})",
                R"({"content":[{"type":"text","text":"{\n  \"arguments\": [\n    1,\n    \"/\"\n  ],\n  \"client\": \"Claude\"\n}"}],"isError":false,"structuredContent":{"arguments":[1,"/"],"client":"Claude"}})"},
            {R"({"name":"echo","arguments":null})",
             R"({"content":[{"type":"text","text":"{\n  \"arguments\": null,\n  \"client\": \"Claude\"\n}"}],"isError":false,"structuredContent":{"arguments":null,"client":"Claude"}})"},
            {R"({"name":"x"})", R"({"content":[{"type":"text","text":"Unknown tool “x”."}],"isError":true})"},
            {R"({"name":"image","_meta":{}})",
             R"({"content":[{"type":"image","data":"AP/+iVBORy8=","mimeType":"image/png"},{"type":"text","text":"a picture"}],"isError":false})"},
        })
        EXPECT_EQ(resultOf(client, "tools/call", JSONValue::parse(c.params)), JSONValue::parse(c.result)) << c.params;

    for (const char* params : {"null", "{}", "[]", "\"name\"", R"({"name":null})", R"({"name":1})"})
        EXPECT_THAT(replyTo(client, R"({"id":1,"method":"tools/call","params":)" + std::string(params) + "}").dump(),
                    AllOf(HasSubstr("-32602"), HasSubstr("tools/call requires a name.")))
            << params;
}

TEST_F(Session, ReadsAResourceOrRefusesInTheProtocolsWay) {
    MCPSession client = session();
    initialize(client);
    EXPECT_EQ(resultOf(client, "resources/read", {{"uri", "morvelin://projects"}}),
              JSONValue::parse(R"({"contents":[{"uri":"morvelin://projects","mimeType":"application/json",
                  "text":"{\n  \"projects\": []\n}"}]})"));
    const auto error = [&](const char* params) {
        return replyTo(client, R"({"id":1,"method":"resources/read","params":)" + std::string(params) + "}")
            .at("error");
    };
    EXPECT_EQ(error(R"({"uri":"morvelin://project/no%20such"})"),
              (JSONValue{{"code", -32602}, {"message", "Unknown resource “morvelin://project/no%20such”."}}));
    for (const char* params : {"null", "{}", R"({"uri":3})", "7"})
        EXPECT_EQ(error(params), (JSONValue{{"code", -32602}, {"message", "resources/read requires a uri."}}))
            << params;
}

TEST_F(Session, RepliesInTheOrderInWhichCallsEnd) {
    MCPSession client = session();
    initialize(client);
    m_replies.clear();
    send(client, R"({"id":"slow","method":"tools/call","params":{"name":"wait"}})");
    send(client, R"({"id":"quick","method":"ping"})");
    m_router.released->give(true);
    EXPECT_THAT(m_replies, ElementsAre(StartsWith(R"({"jsonrpc":"2.0","id":"quick")"),
                                       StartsWith(R"({"jsonrpc":"2.0","id":"slow")")));
}

} // namespace
} // namespace morvelin
