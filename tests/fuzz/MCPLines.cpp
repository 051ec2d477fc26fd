// Whatever an agent sends, in whatever pieces: each line is answered properly or not at all, and the relay, when it has
// to answer alone, agrees with the server about whom.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "agent/ArgumentReader.h"
#include "agent/LineCutter.h"
#include "agent/MCPReply.h"
#include "agent/MCPSession.h"
#include "core/base/JSONCoercion.h"
#include "core/base/SimulatedEventLoop.h"
#include "platform/null/MemoryDefaults.h"
#include "relay/RequestScan.h"

namespace {

using namespace morvelin;

void demand(bool holds, const char* what, std::string_view line) {
    if (holds) return;
    fmt::print(stderr, "broken: {}\n{}\n", what, line);
    std::abort();
}

/// Gives the arguments back in every form in which they are read and written.
class EchoRouter final : public ToolRouter {
public:
    Task<MCPToolResult> call(std::string tool, JSONValue arguments, std::string clientName) override {
        const JSONValue integer = coercedInteger(arguments).value_or(0);
        const ArgumentReader reader(arguments);
        if (reader.flag("fail", false)) co_return MCPToolResult::failed(clientName);
        MCPToolResult result = MCPToolResult::success(
            {{"tool", tool}, {"arguments", std::move(arguments)}, {"n", integer}});
        if (tool == "image") result.imagePNG = clientName;
        co_return result;
    }
    std::vector<MCPResource> resources() override { return {{"u", "n", "d"}}; }
    Result<JSONValue, std::string> readResource(const std::string& uri) override {
        if (uri.empty()) return failure(std::string("It has no name."));
        return JSONValue(uri);
    }
};

void checkReply(std::string_view line, const std::string& reply) {
    demand(reply.find('\n') == reply.size() - 1, "a reply is one line", line);
    const auto value = parseJSON(reply);
    demand(value && value->is_object(), "a reply is JSON", line);
    demand(value->value("jsonrpc", "") == "2.0", "a reply names its protocol", line);
    demand(value->contains("id"), "a reply has an id", line);
    demand(value->contains("result") != value->contains("error"), "a reply has one outcome", line);
}

/// Whether the relay finds the same id to answer as the server does.
void checkRelay(std::string_view line) {
    const auto found = relay::idToAnswer(line);
    const auto id = found ? parseJSON(*found) : Result<JSONValue, JSONError>(JSONValue());
    // A number that no double holds is proper JSON and goes back as it came, though nobody here can read it.
    const bool isNumber = found && found->find_first_of("-0123456789") == 0;
    demand(id || isNumber, "the relay's id is JSON", line);
    // Keys in escapes and a byte order mark are read by the server alone.
    const auto message = JSONRPCMessage::decode(line);
    if (!message || line.contains('\\') || line.starts_with("\xef\xbb\xbf")) return;
    const bool isAnswered = message->method && message->id;
    demand(found.has_value() == isAnswered, "the relay answers requests alone", line);
    if (isAnswered && message->id->is_primitive()) demand(id && *id == *message->id, "the relay keeps the id", line);
}

/// One connection's worth of lines. The first byte says how the bytes fall apart, and what the user answers.
class Conversation {
public:
    void take(std::string_view bytes) {
        if (bytes.empty()) return;
        const auto first = static_cast<unsigned char>(bytes.front());
        const std::size_t piece = 1 + first / 2;
        m_answer = first % 2 == 1;
        LineCutter cutter(4096);
        for (bytes.remove_prefix(1); !bytes.empty() && !cutter.isOverLimit();
             bytes.remove_prefix(std::min(piece, bytes.size()))) {
            cutter.append(bytes.substr(0, piece));
            while (const auto line = cutter.next()) answer(*line);
        }
    }

private:
    void answer(const std::string& line) {
        demand(!line.empty() && line.size() <= 4096 && !line.contains('\n'), "a line is a line", line);
        checkRelay(line);
        const auto check = [](MCPSession& session, std::string text) -> Task<void> {
            if (const auto reply = co_await session.reply(text)) checkReply(text, *reply);
        };
        m_loop.spawn(check(m_session, line));
    }

    SimulatedEventLoop m_loop;
    EchoRouter m_router;
    MemoryDefaults m_defaults;
    bool m_answer = false;
    MCPConsent m_consent{m_defaults,
                         [this](std::string, std::optional<std::string>) -> Task<bool> { co_return m_answer; },
                         MCPConsent::Questions::OneAfterAnother, [](std::string_view) {}};
    MCPSession m_session{
        m_router, m_consent,
        std::make_shared<const MCPServerFacts>(MCPServerFacts{initializeResult("1"), toolListResult({})}),
        MCPPeer::Client};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    Conversation().take({reinterpret_cast<const char*>(bytes), size});
    return 0;
}
