// The relay's entry in the agent clients' files: what is written, what is kept, what is left alone.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "agent/MCPInstaller.h"
#include "base/TemporaryFolder.h"
#include "core/base/JSON.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;
using Kind = MCPInstaller::Client::Kind;

constexpr const char* kRelay = "/opt/morvelin/bin/morvelin-mcp";
constexpr const char* kSection = "[mcp_servers.morvelin]\ncommand = \"/opt/morvelin/bin/morvelin-mcp\"\n";

class MCPInstallerTest : public ::testing::Test {
protected:
    [[nodiscard]] fs::path home() const { return m_folder.path() / "home"; }
    [[nodiscard]] MCPInstaller installer(const fs::path& relay = kRelay) const {
        return MCPInstaller({home(), relay, {m_folder.path() / "bin"}, m_folder.path() / "root"});
    }
    [[nodiscard]] static std::string contentOf(const fs::path& path) { return readFile(path).value_or("(no file)"); }

    /// Installs over such a file; gives what is there afterwards.
    std::string installed(Kind kind, const std::string& before, const fs::path& relay = kRelay) const {
        const auto client = installer().client(kind);
        put(client.configURL, before);
        const auto outcome = installer(relay).install(client);
        EXPECT_TRUE(outcome) << outcome.error().description();
        return contentOf(client.configURL);
    }
    std::string uninstalled(Kind kind, const std::string& before) const {
        const auto client = installer().client(kind);
        put(client.configURL, before);
        const auto outcome = installer().uninstall(client);
        EXPECT_TRUE(outcome) << outcome.error().description();
        return contentOf(client.configURL);
    }

    TemporaryFolder m_folder;
};

TEST_F(MCPInstallerTest, MakesFilesThatDoNotExist) {
    for (const auto& client : installer().clients()) {
        EXPECT_EQ(installer().status(client), MCPInstaller::Status{}) << client.name;
        ASSERT_TRUE(installer().install(client)) << client.name;
        EXPECT_EQ(installer().status(client), (MCPInstaller::Status{true, {}})) << client.name;
        struct stat status {};
        ASSERT_EQ(::stat(client.configURL.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0600u) << client.name;
    }
    const std::string manual = installer().manualConfiguration();
    EXPECT_EQ(manual, "{\n  \"mcpServers\": {\n    \"morvelin\": {\n      \"command\": \"" + std::string(kRelay) +
                          "\"\n    }\n  }\n}");
    EXPECT_EQ(contentOf(home() / ".claude.json"), manual + "\n");
    EXPECT_EQ(contentOf(home() / ".codex/config.toml"), kSection);
    EXPECT_EQ(bytesBelow(home()).size(), 6u) << "three files in three folders, no backup and nothing temporary";
}

TEST_F(MCPInstallerTest, KeepsEverythingElseOfAJSONFileInItsOrder) {
    const std::string before = R"({"zebra": [1.5, {"b": null, "a": "é/\n"}], "mcpServers": {"other": {"command": "x",
        "args": []}, "morvelin": {"args": ["--old"], "command": "/old"}, "last": 18446744073709551615}, "apple": true})";
    auto expected = nlohmann::ordered_json::parse(before);
    expected["mcpServers"]["morvelin"] = nlohmann::ordered_json::object({{"command", kRelay}});

    const std::string after = installed(Kind::ClaudeCode, before);
    EXPECT_EQ(nlohmann::ordered_json::parse(after).dump(), expected.dump()) << "members changed, or their order";

    expected["mcpServers"].erase("morvelin");
    EXPECT_EQ(nlohmann::ordered_json::parse(uninstalled(Kind::ClaudeCode, before)).dump(), expected.dump());
}

TEST_F(MCPInstallerTest, ReplacesItsSectionOfATOMLFileAndNothingElse) {
    struct Case {
        const char* what;
        std::string before;
        std::string kept; ///< what stands before the new section
    };
    const std::string mine = "[mcp_servers.morvelin]\ncommand = \"/old\"\nargs = [\"-x\"]\n\n\n";
    for (const Case& c : std::initializer_list<Case>{
             {"empty", "", ""},
             {"no line feed at the end", "model = \"o\"", "model = \"o\"\n\n"},
             {"carriage returns", "model = \"o\"\r\n", "model = \"o\"\r\n\n"},
             {"a blank line is there already", "a = 1\n\n", "a = 1\n\n"},
             {"in the middle", "a = 1\n\n" + mine + "[other]\nb = 2\n", "a = 1\n\n[other]\nb = 2\n\n"},
             {"at the end", "[other]\nb = 2\n\n" + mine, "[other]\nb = 2\n\n"},
             {"quoted", "[mcp_servers.\"morvelin\"]\ncommand = 'y'\n[other]\n", "[other]\n\n"},
             {"spelled with blanks", "  [ mcp_servers . 'morvelin' ] # mine\ncommand = 'y'\n[other]\n", "[other]\n\n"},
             {"arrays of tables", mine + "[[mcp_servers]]\nc = 3\n", "[[mcp_servers]]\nc = 3\n\n"},
             {"the next table's comment", mine + "# about other\n[other]\n", "# about other\n[other]\n\n"},
             {"names that begin alike", "[mcp_servers.morvelin2]\nd = 4\n[mcp_servers]\n",
              "[mcp_servers.morvelin2]\nd = 4\n[mcp_servers]\n\n"},
             {"its environment", mine + "[mcp_servers.morvelin.env]\nE = '1'\n",
              "[mcp_servers.morvelin.env]\nE = '1'\n\n"}}) {
        const std::string after = installed(Kind::Codex, c.before);
        EXPECT_EQ(after, c.kept + kSection) << c.what;
        EXPECT_EQ(installed(Kind::Codex, after), after) << c.what << ": a second time";
        EXPECT_TRUE(installer().status(installer().client(Kind::Codex)).isCurrent) << c.what;
    }
    EXPECT_EQ(uninstalled(Kind::Codex, "a = 1\n" + mine + "[mcp_servers.morvelin.env]\nE = '1'\n[other]\n"),
              "a = 1\n[other]\n");
}

TEST_F(MCPInstallerTest, WritesPathsThatNeedEscapes) {
    const std::string relay = R"(/home/a "b" \c ü/morvelin-mcp)";
    EXPECT_EQ(installed(Kind::Codex, "", relay),
              "[mcp_servers.morvelin]\ncommand = \"/home/a \\\"b\\\" \\\\c ü/morvelin-mcp\"\n");
    EXPECT_EQ(JSONValue::parse(installed(Kind::ClaudeCode, "{}", relay))["mcpServers"]["morvelin"]["command"], relay);
    for (const Kind kind : {Kind::Codex, Kind::ClaudeCode})
        EXPECT_TRUE(installer(relay).status(installer().client(kind)).isCurrent);

    EXPECT_FALSE(installer("/home/\xff/morvelin-mcp").install(installer().client(Kind::Codex)));
}

TEST_F(MCPInstallerTest, LeavesAloneWhatItDoesNotUnderstand) {
    struct Case {
        Kind kind;
        std::string content;
    };
    for (const Case& c : std::initializer_list<Case>{{Kind::ClaudeCode, "{"},
                                                     {Kind::ClaudeCode, ""},
                                                     {Kind::ClaudeCode, "[]"},
                                                     {Kind::ClaudeCode, R"({"mcpServers": []})"},
                                                     {Kind::ClaudeDesktop, "{} // comment"},
                                                     {Kind::Codex, "a = '\xff'"}}) {
        const auto client = installer().client(c.kind);
        const std::string name = client.configURL.filename().string();
        put(client.configURL, c.content);
        const auto before = bytesBelow(home());
        for (const auto& outcome : {installer().install(client), installer().uninstall(client)}) {
            ASSERT_FALSE(outcome) << c.content;
            EXPECT_EQ(outcome.error().description(), name + " is not a valid configuration file, so Morvelin left it "
                                                            "alone. Fix or delete it and try again.");
        }
        EXPECT_EQ(bytesBelow(home()), before) << c.content;
        EXPECT_EQ(installer().status(client), MCPInstaller::Status{}) << c.content;
    }
}

TEST_F(MCPInstallerTest, DoesNotWriteWhatHasNothingToRemove) {
    put(home() / ".claude.json", R"({"mcpServers":{"other":{}}})");
    put(home() / ".codex/config.toml", "a = 1");
    const auto before = bytesBelow(home());
    for (const auto& client : installer().clients()) EXPECT_TRUE(installer().uninstall(client)) << client.name;
    EXPECT_EQ(bytesBelow(home()), before);
}

TEST_F(MCPInstallerTest, KeepsOneBackupOfTheStateJustBefore) {
    const fs::path file = home() / ".claude.json";
    const fs::path backup = home() / ".claude.json.morvelin-backup";
    put(home() / ".claude.json.morvelin-tmp", "left by a crash");
    const std::string first = installed(Kind::ClaudeCode, R"({"a":1})");
    EXPECT_EQ(contentOf(backup), R"({"a":1})");

    ASSERT_TRUE(installer("/moved/morvelin-mcp").install(installer().client(Kind::ClaudeCode)));
    EXPECT_EQ(contentOf(backup), first);
    EXPECT_EQ(installer().status(installer().client(Kind::ClaudeCode)),
              (MCPInstaller::Status{false, "/moved/morvelin-mcp"}));
    EXPECT_EQ(bytesBelow(home()).size(), 2u);
}

TEST_F(MCPInstallerTest, FollowsLinksAndKeepsPermissions) {
    const fs::path real = m_folder.path() / "dotfiles/claude.json";
    put(real, "{}");
    fs::permissions(real, fs::perms(0640));
    fs::create_directories(home());
    fs::create_symlink("../dotfiles/claude.json", home() / ".claude.json");

    ASSERT_TRUE(installer().install(installer().client(Kind::ClaudeCode)));
    EXPECT_TRUE(fs::is_symlink(home() / ".claude.json"));
    EXPECT_NE(contentOf(real), "{}");
    for (const fs::path& path : {real, fs::path(real.string() + ".morvelin-backup")})
        EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640)) << path;

    // A link to a file that is yet to be made is one as well.
    fs::create_directories(home() / ".codex");
    fs::create_symlink(m_folder.path() / "dotfiles/codex.toml", home() / ".codex/config.toml");
    ASSERT_TRUE(installer().install(installer().client(Kind::Codex)));
    EXPECT_EQ(contentOf(m_folder.path() / "dotfiles/codex.toml"), kSection);
}

TEST_F(MCPInstallerTest, SaysWhyItCouldNotReadOrWriteAndChangesNothing) {
    const auto client = installer().client(Kind::Codex);
    fs::create_directories(client.configURL);
    const auto unreadable = installer().install(client);
    ASSERT_FALSE(unreadable);
    EXPECT_EQ(unreadable.error().description(), "Could not read config.toml: Is a directory");

    fs::remove_all(home() / ".codex");
    put(home() / ".codex", "a file where the folder should be");
    const auto noFolder = installer().install(client);
    ASSERT_FALSE(noFolder);
    EXPECT_EQ(noFolder.error().description(), "Could not update config.toml: Not a directory");

    const std::string large = R"({"a":")" + std::string(5000, 'x') + "\"}";
    put(home() / ".claude.json", large);
    const auto before = bytesBelow(home());
    const FullDisk disk(1000);
    const auto full = installer().install(installer().client(Kind::ClaudeCode));
    ASSERT_FALSE(full);
    EXPECT_EQ(full.error().description(), "Could not update .claude.json: File too large");
    EXPECT_EQ(bytesBelow(home()), before);
}

TEST_F(MCPInstallerTest, FindsClientsByTheirTraces) {
    struct Case {
        Kind kind;
        std::vector<const char*> traces; ///< below the test's folder; any one is enough
    };
    for (const Case& c : std::initializer_list<Case>{
             {Kind::ClaudeCode,
              {"home/.claude/x", "home/.local/bin/claude", "root/opt/homebrew/bin/claude", "root/usr/local/bin/claude",
               "bin/claude"}},
             {Kind::ClaudeDesktop,
              {"root/Applications/Claude.app/x", "home/Applications/Claude.app/x",
               "home/Library/Application Support/Claude/x", "home/.config/Claude/x"}},
             {Kind::Codex,
              {"home/.codex/x", "home/.local/bin/codex", "root/opt/homebrew/bin/codex", "root/usr/local/bin/codex",
               "root/Applications/Codex.app/x", "home/Applications/Codex.app/x",
               "root/Applications/ChatGPT.app/Contents/Resources/codex", "bin/codex"}}})
        for (const char* trace : c.traces) {
            const fs::path path = m_folder.path() / trace;
            put(path, "");
            if (!path.has_extension()) fs::permissions(path, fs::perms(0755));
            for (const auto& client : installer().clients())
                EXPECT_EQ(installer().isPresent(client.kind), client.kind == c.kind) << trace << " " << client.name;
            for (const char* part : {"home", "root", "bin"}) fs::remove_all(m_folder.path() / part);
        }
    put(m_folder.path() / "bin/claude", "no program");
    EXPECT_FALSE(installer().isPresent(Kind::ClaudeCode));
    EXPECT_EQ(MCPInstaller::searchPath(":/usr/bin::/opt/b:"), (std::vector<fs::path>{"/usr/bin", "/opt/b"}));
}

TEST_F(MCPInstallerTest, PutsClaudeDesktopsFileWhereItsFolderIs) {
    const fs::path here = home() / ".config/Claude";
    const fs::path elsewhere = home() / "Library/Application Support/Claude";
    const auto folder = [&] { return installer().client(Kind::ClaudeDesktop).configURL.parent_path(); };
    EXPECT_EQ(folder(), here);
    fs::create_directories(elsewhere);
    EXPECT_EQ(folder(), elsewhere);
    fs::create_directories(here);
    EXPECT_EQ(folder(), here);
}

} // namespace
} // namespace morvelin
