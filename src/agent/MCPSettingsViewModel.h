// What the settings' page for AI agents shows and does, without a window.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "agent/ClientPermissions.h"
#include "agent/MCPInstaller.h"
#include "platform/Defaults.h"

namespace morvelin {

/// Main thread only. Every action reads the page's state anew and leaves its outcome in `message`.
class MCPSettingsViewModel {
public:
    struct ClientRow {
        MCPInstaller::Client client;
        bool isPresent = false;
        bool isCurrent = false;
        std::optional<std::string> stalePath;
    };
    struct Message {
        std::string text;
        bool isError = false;
    };

    MCPSettingsViewModel(const MCPInstaller& installer, Defaults& defaults);

    [[nodiscard]] const std::vector<ClientRow>& rows() const { return m_rows; }
    [[nodiscard]] const ClientPermissions::Names& approvedNames() const { return m_approvedNames; }
    /// Those that may spend voice credits, in whatever case.
    [[nodiscard]] const ClientPermissions::Names& narratingNames() const { return m_narratingNames; }
    /// The most characters that an agent may have spoken in one take.
    [[nodiscard]] std::int64_t narrationCharacterLimit() const { return m_narrationCharacterLimit; }
    /// What the last action came to; absent when there is nothing to say.
    [[nodiscard]] const std::optional<Message>& message() const { return m_message; }

    /// Looks again: files and settings change behind the page's back.
    void refresh();

    /// Also repairs a stale entry.
    void install(MCPInstaller::Client::Kind kind);
    void uninstall(MCPInstaller::Client::Kind kind);
    void revoke(const std::string& name);
    void setNarration(const std::string& name, NarrationPermission permission);
    /// Less than nothing counts as nothing.
    void setNarrationCharacterLimit(std::int64_t limit);

private:
    void finish(const Result<void, std::string>& outcome);
    void finish(const Result<void, MCPInstallError>& outcome, const MCPInstaller::Client& client);

    const MCPInstaller& m_installer;
    Defaults& m_defaults;
    ClientPermissions m_permissions;
    std::vector<ClientRow> m_rows;
    ClientPermissions::Names m_approvedNames;
    ClientPermissions::Names m_narratingNames;
    std::int64_t m_narrationCharacterLimit = 0;
    std::optional<Message> m_message;
};

} // namespace morvelin
