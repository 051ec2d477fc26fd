#include "agent/ClientConfig.h"

#include <nlohmann/json.hpp>

namespace morvelin {

namespace {

using OrderedJSON = nlohmann::ordered_json;

constexpr const char* kServers = "mcpServers";

/// The whole text, if it is an object whose `mcpServers`, where there is one, is an object as well.
Result<OrderedJSON, MalformedConfig> parse(std::string_view text) {
    OrderedJSON root = OrderedJSON::parse(text, nullptr, false);
    if (!root.is_object()) return failure(MalformedConfig{});
    if (root.contains(kServers) && !root[kServers].is_object()) return failure(MalformedConfig{});
    return root;
}

std::string write(const OrderedJSON& root) {
    return root.dump(2, ' ', false, OrderedJSON::error_handler_t::replace) + "\n";
}

} // namespace

std::optional<std::string> JSONClientConfig::command(std::string_view text) const {
    const auto root = parse(text);
    if (!root || !root->contains(kServers)) return std::nullopt;
    const OrderedJSON& servers = root->at(kServers);
    if (!servers.contains(kMCPServerKey)) return std::nullopt;
    const OrderedJSON& server = servers.at(kMCPServerKey);
    if (!server.is_object() || !server.contains("command") || !server["command"].is_string()) return std::nullopt;
    return server["command"].get<std::string>();
}

ClientConfig::Edited JSONClientConfig::withServer(const std::optional<std::string>& text,
                                                  const std::string& command) const {
    auto root = parse(text.value_or("{}"));
    if (!root) return passOn(std::move(root));
    (*root)[kServers][kMCPServerKey] = OrderedJSON{{"command", command}};
    return write(*root);
}

ClientConfig::Edited JSONClientConfig::withoutServer(const std::string& text) const {
    auto root = parse(text);
    if (!root) return passOn(std::move(root));
    if (!root->contains(kServers) || root->at(kServers).erase(kMCPServerKey) == 0) return std::nullopt;
    return write(*root);
}

} // namespace morvelin
