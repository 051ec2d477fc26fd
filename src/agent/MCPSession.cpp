#include "agent/MCPSession.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "agent/MCPReply.h"

namespace morvelin {

namespace {

enum class Method { Initialize, Ping, ListTools, CallTool, ListResources, ReadResource, ListPrompts };
enum class Access { Everyone, Authorized };

struct MethodRow {
    std::string_view name;
    Method method;
    Access access;
};

constexpr std::array kMethods{
    MethodRow{"initialize", Method::Initialize, Access::Everyone},
    MethodRow{"ping", Method::Ping, Access::Everyone},
    MethodRow{"tools/list", Method::ListTools, Access::Authorized},
    MethodRow{"tools/call", Method::CallTool, Access::Authorized},
    MethodRow{"resources/list", Method::ListResources, Access::Authorized},
    MethodRow{"resources/read", Method::ReadResource, Access::Authorized},
    MethodRow{"prompts/list", Method::ListPrompts, Access::Everyone},
};

/// A member that is a text; nothing when the value is no object, or the member is absent or something else.
std::optional<std::string> textMember(const JSONValue& object, const char* key) {
    if (!object.is_object()) return std::nullopt;
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) return std::nullopt;
    return found->get<std::string>();
}

JSONValue member(const JSONValue& object, const char* key) {
    return object.is_object() ? object.value(key, JSONValue()) : JSONValue();
}

} // namespace

Task<std::optional<std::string>> MCPSession::reply(std::string line) {
    auto message = JSONRPCMessage::decode(line);
    if (!message) co_return errorReply(JSONValue(), JSONRPCError::ParseError, "Message is not valid JSON-RPC.");
    if (!message->method || !message->id) co_return std::nullopt;
    Request request{std::move(*message->id), std::move(message->params).value_or(JSONValue())};
    co_return co_await answer(std::move(*message->method), std::move(request));
}

Task<std::string> MCPSession::answer(std::string method, Request request) {
    const auto row = std::ranges::find(kMethods, method, &MethodRow::name);
    if (row == kMethods.end())
        co_return errorReply(request.id, JSONRPCError::MethodNotFound, fmt::format("Unknown method “{}”.", method));
    if (row->access == Access::Authorized && !m_isAuthorized) co_return refusal(request);
    switch (row->method) {
    case Method::Initialize: co_return co_await initialize(std::move(request));
    case Method::Ping: co_return resultReply(request.id, "{}");
    case Method::ListTools: co_return resultReply(request.id, m_facts->toolListResult);
    case Method::CallTool: co_return co_await callTool(std::move(request));
    case Method::ListResources: co_return resultReply(request.id, resourceListResult(m_router.resources()));
    case Method::ReadResource: co_return readResource(request);
    case Method::ListPrompts: co_return resultReply(request.id, R"({"prompts":[]})");
    }
    co_return std::string();
}

std::string MCPSession::refusal(const Request& request) const {
    return errorReply(
        request.id, JSONRPCError::InvalidRequest,
        fmt::format("Call initialize first, and have the user allow “{}” to control Morvelin.", m_clientName));
}

Task<std::string> MCPSession::initialize(Request request) {
    const JSONValue client = member(request.params, "clientInfo");
    if (auto name = textMember(client, "name")) m_clientName = std::move(*name);
    // Another `initialize` may rename the client while this one waits for the user.
    const std::string name = m_clientName;
    bool isAllowed = m_peer == MCPPeer::OwnProgram;
    if (!isAllowed) isAllowed = co_await m_consent.authorize(name, textMember(client, "version"));
    if (!isAllowed) {
        co_return errorReply(request.id, JSONRPCError::InvalidRequest,
                             fmt::format("The user declined to let “{}” control Morvelin. Grant access from the "
                                         "Morvelin menu bar icon, then reconnect.",
                                         name));
    }
    m_isAuthorized = true;
    co_return resultReply(request.id, m_facts->initializeResult);
}

Task<std::string> MCPSession::callTool(Request request) {
    auto name = textMember(request.params, "name");
    if (!name) co_return errorReply(request.id, JSONRPCError::InvalidParams, "tools/call requires a name.");
    JSONValue arguments;
    if (const auto found = request.params.find("arguments"); found != request.params.end())
        arguments = std::move(*found);
    const MCPToolResult result = co_await m_router.call(std::move(*name), std::move(arguments), m_clientName);
    co_return resultReply(request.id, toolCallResult(result));
}

std::string MCPSession::readResource(const Request& request) {
    const auto uri = textMember(request.params, "uri");
    if (!uri) return errorReply(request.id, JSONRPCError::InvalidParams, "resources/read requires a uri.");
    const auto content = m_router.readResource(*uri);
    if (!content) return errorReply(request.id, JSONRPCError::InvalidParams, content.error());
    return resultReply(request.id, resourceReadResult(*uri, *content));
}

} // namespace morvelin
