// The settings' page for AI agents: what it shows, and what its actions leave behind.

#include <gtest/gtest.h>

#include "agent/MCPSettingsViewModel.h"
#include "base/TemporaryFolder.h"
#include "platform/DefaultsKeys.h"
#include "platform/null/MemoryDefaults.h"

namespace morvelin {
namespace {

using Kind = MCPInstaller::Client::Kind;

class MCPSettingsViewModelTest : public ::testing::Test {
protected:
    [[nodiscard]] std::filesystem::path home() const { return m_folder.path() / "home"; }

    TemporaryFolder m_folder;
    MCPInstaller m_installer{{home(), "/opt/morvelin/bin/morvelin-mcp", {}, m_folder.path() / "root"}};
    MemoryDefaults m_settings;
};

TEST_F(MCPSettingsViewModelTest, ShowsClientsAndWhatSettingThemUpCameTo) {
    put(home() / ".claude.json", R"({"mcpServers":{"morvelin":{"command":"/old/morvelin-mcp"}}})");
    put(home() / ".codex/config.toml", "\xff");
    MCPSettingsViewModel page(m_installer, m_settings);
    ASSERT_EQ(page.rows().size(), 3u);
    EXPECT_EQ(page.rows()[0].stalePath, "/old/morvelin-mcp");
    EXPECT_FALSE(page.rows()[0].isPresent || page.rows()[1].isPresent);
    EXPECT_TRUE(page.rows()[2].isPresent);
    EXPECT_FALSE(page.message());

    page.install(Kind::ClaudeCode);
    EXPECT_TRUE(page.rows()[0].isCurrent && !page.rows()[0].stalePath);
    EXPECT_EQ(page.message()->text, "Start a new Claude Code session");
    EXPECT_FALSE(page.message()->isError);

    page.install(Kind::Codex);
    EXPECT_TRUE(page.message()->isError);
    EXPECT_TRUE(page.message()->text.starts_with("config.toml is not a valid"));

    page.uninstall(Kind::ClaudeCode);
    EXPECT_FALSE(page.rows()[0].isCurrent);
    EXPECT_FALSE(page.message()->isError);
}

TEST_F(MCPSettingsViewModelTest, ChangesPermissions) {
    MCPSettingsViewModel page(m_installer, m_settings);
    ClientPermissions permissions(m_settings);
    for (const char* name : {"Älpha", "Beta", "älpha"}) ASSERT_TRUE(permissions.approve(name));
    EXPECT_TRUE(page.approvedNames().empty()) << "the page shows what it has last looked at";
    page.refresh();
    EXPECT_EQ(page.approvedNames(), (ClientPermissions::Names{"Älpha", "Beta"}));

    page.setNarration("älpha", NarrationPermission::Granted);
    page.setNarration("ÄLPHA", NarrationPermission::Granted);
    page.setNarration("beta", NarrationPermission::Granted);
    EXPECT_EQ(page.narratingNames(), (ClientPermissions::Names{"ÄLPHA", "beta"}));
    page.setNarration("Beta", NarrationPermission::Denied);
    EXPECT_EQ(page.narratingNames(), (ClientPermissions::Names{"ÄLPHA"}));

    page.revoke("älphA");
    EXPECT_EQ(page.approvedNames(), (ClientPermissions::Names{"Beta"}));
    EXPECT_TRUE(page.narratingNames().empty());

    page.setNarrationCharacterLimit(-5);
    EXPECT_EQ(page.narrationCharacterLimit(), 0);
    page.setNarrationCharacterLimit(1500);
    EXPECT_EQ(m_settings.get(defaults::kMCPNarrationCharacterLimit), 1500);
    EXPECT_FALSE(page.message());
}

} // namespace
} // namespace morvelin
