#include "app/Commands.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "agent/ClientPermissions.h"
#include "agent/MCPInstaller.h"

namespace morvelin {

namespace {

using Action = ClientsOptions::Action;
using Kind = MCPInstaller::Client::Kind;

constexpr std::pair<const char*, Kind> kClientWords[] = {
    {"claude-code", Kind::ClaudeCode}, {"claude-desktop", Kind::ClaudeDesktop}, {"codex", Kind::Codex}};

std::optional<Kind> kindOf(const std::string& word) {
    for (const auto& [known, kind] : kClientWords)
        if (word == known) return kind;
    return std::nullopt;
}

std::string state(const MCPInstaller& installer, Kind kind) {
    const auto status = installer.status(installer.client(kind));
    if (status.isCurrent) return "set up";
    if (status.stalePath) return fmt::format("starts {} (morvelin clients install repairs it)", *status.stalePath);
    return installer.isPresent(kind) ? "found, not set up" : "not found";
}

void list(const MCPInstaller& installer, const ClientPermissions& permissions) {
    for (const auto& [word, kind] : kClientWords)
        fmt::print("{:<15} {:<15} {}\n", word, installer.client(kind).name, state(installer, kind));
    const auto names = permissions.approvedNames();
    fmt::print("\n{}\n", names.empty() ? "No client may control Morvelin." : "These may control Morvelin:");
    for (const std::string& name : names)
        fmt::print("  {}{}\n", name, permissions.mayNarrate(name) ? " (and spend voice credits)" : "");
}

int fail(const std::string& reason) {
    fmt::print(stderr, "{}\n", reason);
    return kFailure;
}

int setUp(const MCPInstaller& installer, const ClientsOptions& options) {
    const auto kind = kindOf(options.name);
    if (!kind) {
        fmt::print(stderr, "“{}” is none of {}.\n", options.name, fmt::join(clientWords(), ", "));
        return kWrongWords;
    }
    const auto client = installer.client(*kind);
    const auto changed = options.action == Action::Install ? installer.install(client) : installer.uninstall(client);
    if (!changed) return fail(changed.error().description());
    fmt::print("{}\n", client.configURL.string());
    fmt::print(stderr, "{}.\n", client.restartHint);
    return kSuccess;
}

int finish(const Result<void, std::string>& changed) { return changed ? kSuccess : fail(changed.error()); }

} // namespace

std::vector<std::string> clientWords() {
    std::vector<std::string> words;
    for (const auto& [word, kind] : kClientWords) words.emplace_back(word);
    return words;
}

int runClients(Composition& composition, const ClientsOptions& options) {
    const MCPInstaller installer(composition.installerPlaces());
    ClientPermissions permissions(*composition.defaults);
    switch (options.action) {
    case Action::List: list(installer, permissions); return kSuccess;
    case Action::Allow: return finish(permissions.approve(options.name));
    case Action::Revoke: return finish(permissions.revoke(options.name));
    case Action::Install:
    case Action::Uninstall: return setUp(installer, options);
    }
    std::unreachable();
}

} // namespace morvelin
