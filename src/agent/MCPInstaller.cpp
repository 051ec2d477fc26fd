#include "agent/MCPInstaller.h"

#include <algorithm>

#include <unistd.h>

#include "agent/ClientConfig.h"
#include "agent/ConfigFile.h"
#include "core/base/JSON.h"
#include "core/base/Text.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

using Client = MCPInstaller::Client;
using Places = MCPInstaller::Places;

bool isThere(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error);
}

bool isProgram(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

/// Claude Desktop's folder on Linux; the other place counts only where somebody already has it.
fs::path claudeDesktopFolder(const fs::path& home) {
    const fs::path here = home / ".config/Claude";
    const fs::path elsewhere = home / "Library/Application Support/Claude";
    return !isThere(here) && isThere(elsewhere) ? elsewhere : here;
}

/// What tells that a client is on this machine.
struct Traces {
    std::vector<const char*> inHome;
    std::vector<const char*> inSystem;
    std::vector<const char*> programs; ///< looked for in the search path
};

Traces tracesOf(Client::Kind kind) {
    switch (kind) {
    case Client::Kind::ClaudeCode:
        return {{".claude", ".local/bin/claude"}, {"opt/homebrew/bin/claude", "usr/local/bin/claude"}, {"claude"}};
    case Client::Kind::ClaudeDesktop:
        return {{"Applications/Claude.app", "Library/Application Support/Claude", ".config/Claude"},
                {"Applications/Claude.app"},
                {}};
    case Client::Kind::Codex:
        return {{".codex", ".local/bin/codex", "Applications/Codex.app"},
                {"opt/homebrew/bin/codex", "usr/local/bin/codex", "Applications/Codex.app",
                 "Applications/ChatGPT.app/Contents/Resources/codex"},
                {"codex"}};
    }
    return {};
}

const ClientConfig& configOf(Client::Kind kind) {
    static const JSONClientConfig json;
    static const TOMLClientConfig toml;
    switch (kind) {
    case Client::Kind::ClaudeCode:
    case Client::Kind::ClaudeDesktop: return json;
    case Client::Kind::Codex: return toml;
    }
    return json;
}

/// An edit's outcome with the file's name in its error.
Result<std::optional<std::string>, MCPInstallError> named(const Client& client, ClientConfig::Edited edited) {
    if (edited) return std::move(*edited);
    return failure(MCPInstallError(MCPInstallError::Malformed{client.configURL.filename().string()}));
}

} // namespace

std::vector<fs::path> MCPInstaller::searchPath(std::string_view variable) {
    std::vector<fs::path> folders;
    while (!variable.empty()) {
        const std::size_t colon = std::min(variable.find(':'), variable.size());
        if (colon > 0) folders.emplace_back(variable.substr(0, colon));
        variable.remove_prefix(std::min(colon + 1, variable.size()));
    }
    return folders;
}

std::vector<Client> MCPInstaller::clients() const {
    return {client(Client::Kind::ClaudeCode), client(Client::Kind::ClaudeDesktop), client(Client::Kind::Codex)};
}

Client MCPInstaller::client(Client::Kind kind) const {
    const fs::path& home = m_places.home;
    switch (kind) {
    case Client::Kind::ClaudeCode:
        return {kind, "Claude Code", home / ".claude.json", "Start a new Claude Code session", {}};
    case Client::Kind::ClaudeDesktop:
        return {kind, "Claude Desktop", claudeDesktopFolder(home) / "claude_desktop_config.json",
                "Quit and reopen Claude", "com.anthropic.claudefordesktop"};
    case Client::Kind::Codex: return {kind, "Codex", home / ".codex/config.toml", "Start a new Codex session", {}};
    }
    return {};
}

bool MCPInstaller::isPresent(Client::Kind kind) const {
    const Traces traces = tracesOf(kind);
    const auto inHome = [&](const char* trace) { return isThere(m_places.home / trace); };
    const auto inSystem = [&](const char* trace) { return isThere(m_places.root / trace); };
    const auto isFound = [&](const char* program) {
        return std::ranges::any_of(m_places.searchPath,
                                   [&](const fs::path& folder) { return isProgram(folder / program); });
    };
    return std::ranges::any_of(traces.inHome, inHome) || std::ranges::any_of(traces.inSystem, inSystem) ||
           std::ranges::any_of(traces.programs, isFound);
}

MCPInstaller::Status MCPInstaller::status(const Client& client) const {
    const auto content = readConfigFile(client.configURL);
    if (!content || !*content) return {};
    auto command = configOf(client.kind).command(**content);
    if (!command) return {};
    if (*command == m_places.relay.string()) return {true, std::nullopt};
    return {false, std::move(command)};
}

Result<void, MCPInstallError> MCPInstaller::install(const Client& client) const {
    const std::string command = m_places.relay.string();
    if (!isUTF8(command))
        return failure(MCPInstallError(MCPInstallError::WriteFailed{
            client.configURL.filename().string(), "the folder that Morvelin is in has a name that is not UTF-8 text"}));
    return editConfigFile(client.configURL, [&](const std::optional<std::string>& content) {
        return named(client, configOf(client.kind).withServer(content, command));
    });
}

Result<void, MCPInstallError> MCPInstaller::uninstall(const Client& client) const {
    const auto content = readConfigFile(client.configURL);
    if (!content) return failure(content.error());
    if (!*content) return {}; // before the edit, which would make the folder
    return editConfigFile(client.configURL, [&](const std::optional<std::string>& now) {
        return named(client, now ? configOf(client.kind).withoutServer(*now) : std::nullopt);
    });
}

std::string MCPInstaller::manualConfiguration() const {
    const JSONValue server{{"command", m_places.relay.string()}};
    return writeJSON({{"mcpServers", {{kMCPServerKey, server}}}}, JSONStyle::Pretty);
}

} // namespace morvelin
