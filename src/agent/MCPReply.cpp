#include "agent/MCPReply.h"

#include "core/base/Base64.h"

namespace morvelin {

namespace {

constexpr const char* kProtocolVersion = "2025-06-18";
constexpr const char* kJSONType = "application/json";

std::string compact(const JSONValue& value) { return writeJSON(value, JSONStyle::Compact); }

/// An id is nearly always a small number: getting the encoder ready costs many times as much as writing it.
std::string idText(const JSONValue& id) {
    if (id.is_number_unsigned()) return std::to_string(id.get<std::uint64_t>());
    return compact(id);
}

std::string imageContent(std::string_view png) {
    return R"({"type":"image","data":")" + base64(png) + R"(","mimeType":"image/png"},)";
}

} // namespace

std::string resultReply(const JSONValue& id, std::string_view result) {
    std::string line = R"({"jsonrpc":"2.0","id":)" + idText(id);
    line.reserve(line.size() + result.size() + 16);
    line.append(R"(,"result":)").append(result).append("}\n");
    return line;
}

std::string errorReply(const JSONValue& id, JSONRPCError code, const std::string& message) {
    const JSONValue error{{"code", static_cast<int>(code)}, {"message", message}};
    return compact({{"jsonrpc", "2.0"}, {"id", id}, {"error", error}}) + '\n';
}

std::string initializeResult(const std::string& version) {
    return compact({
        {"protocolVersion", kProtocolVersion},
        {"capabilities", {{"tools", JSONValue::object()}, {"resources", JSONValue::object()}}},
        {"serverInfo", {{"name", "morvelin"}, {"version", version}}},
    });
}

std::string toolListResult(const std::vector<MCPTool>& tools) {
    JSONValue list = JSONValue::array();
    for (const MCPTool& tool : tools)
        list.push_back({{"name", tool.name}, {"description", tool.description}, {"inputSchema", tool.inputSchema}});
    return compact({{"tools", std::move(list)}});
}

std::string toolCallResult(const MCPToolResult& result) {
    std::string text = R"({"content":[)";
    if (result.imagePNG) text += imageContent(*result.imagePNG);
    text.append(R"({"type":"text","text":)").append(compact(result.text));
    text.append(R"(}],"isError":)").append(result.isError ? "true" : "false");
    if (result.structured) text.append(R"(,"structuredContent":)").append(compact(*result.structured));
    return text + '}';
}

std::string resourceListResult(const std::vector<MCPResource>& resources) {
    JSONValue list = JSONValue::array();
    for (const MCPResource& each : resources)
        list.push_back(
            {{"uri", each.uri}, {"name", each.name}, {"description", each.description}, {"mimeType", each.mimeType}});
    return compact({{"resources", std::move(list)}});
}

std::string resourceReadResult(const std::string& uri, const JSONValue& content) {
    const JSONValue item{{"uri", uri}, {"mimeType", kJSONType}, {"text", writeJSON(content, JSONStyle::Pretty)}};
    return compact({{"contents", JSONValue::array({item})}});
}

} // namespace morvelin
