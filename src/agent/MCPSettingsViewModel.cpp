#include "agent/MCPSettingsViewModel.h"

#include <algorithm>

#include "platform/DefaultsKeys.h"

namespace morvelin {

MCPSettingsViewModel::MCPSettingsViewModel(const MCPInstaller& installer, Defaults& defaults)
    : m_installer(installer),
      m_defaults(defaults),
      m_permissions(defaults) {
    refresh();
}

void MCPSettingsViewModel::refresh() {
    m_rows.clear();
    for (MCPInstaller::Client client : m_installer.clients()) {
        auto status = m_installer.status(client);
        const bool isPresent = m_installer.isPresent(client.kind);
        m_rows.push_back({std::move(client), isPresent, status.isCurrent, std::move(status.stalePath)});
    }
    m_approvedNames = m_permissions.approvedNames();
    m_narratingNames = m_permissions.narratingNames();
    m_narrationCharacterLimit = m_defaults.get(defaults::kMCPNarrationCharacterLimit);
}

void MCPSettingsViewModel::install(MCPInstaller::Client::Kind kind) {
    const auto client = m_installer.client(kind);
    finish(m_installer.install(client), client);
}

void MCPSettingsViewModel::uninstall(MCPInstaller::Client::Kind kind) {
    const auto client = m_installer.client(kind);
    finish(m_installer.uninstall(client), client);
}

void MCPSettingsViewModel::revoke(const std::string& name) { finish(m_permissions.revoke(name)); }

void MCPSettingsViewModel::setNarration(const std::string& name, NarrationPermission permission) {
    finish(m_permissions.setNarration(name, permission));
}

void MCPSettingsViewModel::setNarrationCharacterLimit(std::int64_t limit) {
    finish(m_defaults.set(defaults::kMCPNarrationCharacterLimit, std::max<std::int64_t>(limit, 0)));
}

void MCPSettingsViewModel::finish(const Result<void, std::string>& outcome) {
    m_message.reset();
    if (!outcome) m_message = Message{outcome.error(), true};
    refresh();
}

void MCPSettingsViewModel::finish(const Result<void, MCPInstallError>& outcome, const MCPInstaller::Client& client) {
    m_message = outcome ? Message{client.restartHint, false} : Message{outcome.error().description(), true};
    refresh();
}

} // namespace morvelin
