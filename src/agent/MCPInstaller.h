// Enters the relay into the configuration files of the agent clients on this machine, so that they start it themselves.
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/MCPInstallError.h"
#include "core/base/Result.h"

namespace morvelin {

/// Synchronous, without state of its own: every question looks at the files anew.
class MCPInstaller {
public:
    struct Client {
        enum class Kind { ClaudeCode, ClaudeDesktop, Codex };

        Kind kind;
        std::string name;
        std::filesystem::path configURL;
        std::string restartHint; ///< what makes a running client see the change
        std::optional<std::string> bundleIdentifier;
    };

    /// What a client's file says about this server.
    struct Status {
        bool isCurrent = false;               ///< it starts this relay
        std::optional<std::string> stalePath; ///< it starts another file: this program has moved, or a copy of it
                                              ///< entered itself
        bool operator==(const Status&) const = default;
    };

    /// Where things lie.
    struct Places {
        std::filesystem::path home;
        std::filesystem::path relay;                   ///< the program that clients are to start
        std::vector<std::filesystem::path> searchPath; ///< the folders of `PATH`
        std::filesystem::path root = "/";              ///< what the system's own folders begin with
    };

    explicit MCPInstaller(Places places) : m_places(std::move(places)) {}

    /// The relay lies beside the running program.
    [[nodiscard]] static std::filesystem::path relayBeside(const std::filesystem::path& executable) {
        return executable.parent_path() / "morvelin-mcp";
    }
    /// The folders of a `PATH` variable; empty entries are left out.
    [[nodiscard]] static std::vector<std::filesystem::path> searchPath(std::string_view variable);

    [[nodiscard]] std::vector<Client> clients() const;
    [[nodiscard]] Client client(Client::Kind kind) const;

    /// Whether the client seems to be on this machine.
    [[nodiscard]] bool isPresent(Client::Kind kind) const;
    /// A file that cannot be read, or not understood, says nothing.
    [[nodiscard]] Status status(const Client& client) const;

    /// Makes the client start this relay; what its file said about this server is replaced.
    Result<void, MCPInstallError> install(const Client& client) const;
    /// Takes this server out of the client's file; a file that does not name it is not written.
    Result<void, MCPInstallError> uninstall(const Client& client) const;

    /// What to put into another client's file by hand.
    [[nodiscard]] std::string manualConfiguration() const;

private:
    Places m_places;
};

constexpr auto rawValues(std::type_identity<MCPInstaller::Client::Kind>) {
    using enum MCPInstaller::Client::Kind;
    return std::to_array<std::pair<MCPInstaller::Client::Kind, std::string_view>>(
        {{ClaudeCode, "claudeCode"}, {ClaudeDesktop, "claudeDesktop"}, {Codex, "codex"}});
}

} // namespace morvelin
