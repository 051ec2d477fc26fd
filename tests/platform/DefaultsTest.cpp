// Settings: what is written comes back, in this process and in others, and nothing is lost on the way.

#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "core/base/GLibEventLoop.h"
#include "platform/DefaultsKeys.h"
#include "platform/linux/KeyFileDefaults.h"
#include "platform/null/MemoryDefaults.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

class KeyFileDefaultsTest : public testing::Test {
protected:
    KeyFileDefaults open() {
        return {m_folder.path(), [this](std::string_view line) { m_log.emplace_back(line); }};
    }

    TemporaryFolder m_folder;
    fs::path m_file = m_folder.path() / "morvelin/defaults.conf";
    std::vector<std::string> m_log;
};

void expectUnset(const Defaults& defaults) {
    EXPECT_FALSE(defaults.get(defaults::kHasOnboarded));
    EXPECT_TRUE(defaults.get(defaults::kFounderModeEnabled));
    EXPECT_EQ(defaults.get(defaults::kMCPNarrationCharacterLimit), 0);
    EXPECT_EQ(defaults.get(defaults::kTheme), "system");
    EXPECT_THAT(defaults.get(defaults::kMCPApprovedClients), testing::IsEmpty());
}

/// What both stores must do alike; `reader` may be the same object or another one on the same file.
void expectKeepsValues(Defaults& writer, const Defaults& reader) {
    expectUnset(reader);
    EXPECT_TRUE(writer.set(defaults::kHasOnboarded, true));
    EXPECT_TRUE(writer.set(defaults::kFounderModeEnabled, false));
    EXPECT_TRUE(reader.get(defaults::kHasOnboarded));
    EXPECT_FALSE(reader.get(defaults::kFounderModeEnabled));
    for (const std::int64_t number : {std::int64_t(0), std::int64_t(-7), INT64_MAX, INT64_MIN}) {
        EXPECT_TRUE(writer.set(defaults::kMCPNarrationCharacterLimit, number));
        EXPECT_EQ(reader.get(defaults::kMCPNarrationCharacterLimit), number);
    }
    const Defaults::Texts hard{"",     " both ends ", "a;b;",     "\\",          "\\n \\s;\\;", "line\nfeed\r\n\ttab ",
                               "Zoë…", "日本語",      "#comment", "[group]=x=y", "  ",          ";"};
    for (const std::string& text : hard) {
        EXPECT_TRUE(writer.set(defaults::kElevenLabsDefaultVoiceID, text));
        EXPECT_EQ(reader.get(defaults::kElevenLabsDefaultVoiceID), text);
    }
    for (const Defaults::Texts& list : {hard, Defaults::Texts{""}, Defaults::Texts{"", ""}, Defaults::Texts{}}) {
        EXPECT_TRUE(writer.change(defaults::kMCPApprovedClients, [&](auto) { return list; }));
        EXPECT_EQ(reader.get(defaults::kMCPApprovedClients), list);
    }
}

TEST(MemoryDefaultsTest, KeepsValuesAndTellsOfChanges) {
    MemoryDefaults defaults;
    expectKeepsValues(defaults, defaults);
    int changes = 0;
    defaults.onChange([&] { ++changes; });
    EXPECT_TRUE(defaults.set(defaults::kTheme, "dark"));
    defaults.clear();
    EXPECT_EQ(changes, 2);
    expectUnset(defaults);
}

TEST_F(KeyFileDefaultsTest, KeepsValuesForEveryReader) {
    KeyFileDefaults writer = open();
    const KeyFileDefaults reader = open();
    expectKeepsValues(writer, reader);
    fs::remove(m_file);
    expectUnset(reader);
    EXPECT_THAT(m_log, testing::IsEmpty());
}

TEST_F(KeyFileDefaultsTest, ReadsWhatAPersonWroteAndKeepsTheirComments) {
    put(m_file, "# mine\n[morvelin]\nhasOnboarded=1\nmcpNarrationCharacterLimit=many\nfounderModeEnabled=perhaps\n"
                "elevenLabsDefaultVoiceID=\xff\n[other]\nkey=kept\n");
    KeyFileDefaults defaults = open();
    EXPECT_TRUE(defaults.get(defaults::kHasOnboarded));
    EXPECT_EQ(defaults.get(defaults::kMCPNarrationCharacterLimit), 0) << "no number reads as unset";
    EXPECT_TRUE(defaults.get(defaults::kFounderModeEnabled)) << "neither true nor false reads as unset";
    EXPECT_EQ(defaults.get(defaults::kElevenLabsDefaultVoiceID), "") << "what is no UTF-8 reads as unset";
    EXPECT_TRUE(defaults.set(defaults::kTheme, "dark"));
    EXPECT_THAT(readFile(m_file).value(), testing::AllOf(HasSubstr("# mine"), HasSubstr("key=kept")));
}

TEST_F(KeyFileDefaultsTest, SetsADamagedFileAside) {
    const std::string damaged[] = {"[morvelin\nhasOnboarded=true\n", "no key and no group\n", std::string(300, '\0')};
    for (std::size_t i = 0; i < std::size(damaged); ++i) {
        put(m_file, damaged[i]);
        KeyFileDefaults defaults = open();
        // Reading and writing both find the damage, whichever comes first.
        if (i % 2 == 0) expectUnset(defaults);
        EXPECT_TRUE(defaults.set(defaults::kTheme, "dark"));
        EXPECT_EQ(defaults.get(defaults::kTheme), "dark");
        EXPECT_EQ(m_log.size(), i + 1) << "one line for each damaged file";
    }
    EXPECT_EQ(readFile(m_file.string() + ".damaged").value(), damaged[0]);
    EXPECT_EQ(readFile(m_file.string() + ".damaged-3").value(), damaged[2]);
}

TEST_F(KeyFileDefaultsTest, SaysWhyNothingCouldBeSaved) {
    KeyFileDefaults defaults = open();
    ASSERT_TRUE(defaults.set(defaults::kTheme, "dark"));
    {
        const FullDisk disk(8);
        const auto full = defaults.set(defaults::kTheme, "a theme that needs room");
        ASSERT_FALSE(full);
        EXPECT_THAT(full.error(), HasSubstr("The settings could not be saved. Could not write "));
    }
    EXPECT_EQ(defaults.get(defaults::kTheme), "dark");

    fs::remove_all(m_file);
    fs::create_directories(m_file);
    EXPECT_FALSE(defaults.set(defaults::kTheme, "dark")) << "a folder lies in its place";
    expectUnset(defaults);
}

TEST_F(KeyFileDefaultsTest, KeepsALinkToWhereAPersonHasTheFile) {
    put(m_folder.path() / "dotfiles/morvelin.conf", "[morvelin]\nhasOnboarded=true\n");
    fs::create_directories(m_file.parent_path());
    fs::create_symlink("../dotfiles/morvelin.conf", m_file);
    KeyFileDefaults defaults = open();
    EXPECT_TRUE(defaults.set(defaults::kTheme, "dark"));
    EXPECT_TRUE(fs::is_symlink(m_file));
    EXPECT_TRUE(open().get(defaults::kHasOnboarded));
    EXPECT_THAT(readFile(m_folder.path() / "dotfiles/morvelin.conf").value(), HasSubstr("dark"));
}

/// Runs in a process of its own; gives its id.
pid_t inChild(const std::function<void()>& work) {
    const pid_t child = ::fork();
    if (child != 0) return child;
    work();
    ::_exit(0);
}

TEST_F(KeyFileDefaultsTest, ManyProcessesAddToOneListAndLoseNothing) {
    constexpr int kProcesses = 4, kNames = 25;
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; ++process) {
        children.push_back(inChild([&] {
            KeyFileDefaults defaults = open();
            for (int i = 0; i < kNames; ++i) {
                const auto name = std::to_string(process) + "/" + std::to_string(i);
                (void)defaults.change(defaults::kMCPApprovedClients, [&](Defaults::Texts names) {
                    names.push_back(name);
                    return names;
                });
            }
        }));
    }
    for (const pid_t child : children) ::waitpid(child, nullptr, 0);
    EXPECT_EQ(open().get(defaults::kMCPApprovedClients).size(), std::size_t(kProcesses * kNames));
}

TEST_F(KeyFileDefaultsTest, TellsOfOwnWritingAndOfThatOfOthers) {
    GLibEventLoop loop;
    KeyFileDefaults defaults = open();
    std::vector<std::string> seen;
    defaults.onChange([&] {
        seen.push_back(defaults.get(defaults::kTheme));
        loop.quit();
    });
    const auto stop = loop.after(10_s, [&] { loop.quit(); });

    loop.post([&] { EXPECT_TRUE(defaults.set(defaults::kTheme, "light")); });
    loop.run();
    pid_t child = 0;
    loop.post([&] { child = inChild([&] { (void)open().set(defaults::kTheme, "dark"); }); });
    loop.run();
    ::waitpid(child, nullptr, 0);
    EXPECT_THAT(seen, ElementsAre("light", "dark"));

    defaults.onChange(nullptr);
    EXPECT_TRUE(defaults.set(defaults::kTheme, "system"));
    const auto soon = loop.after(0.1_s, [&] { loop.quit(); });
    loop.run();
    EXPECT_EQ(seen.size(), 2u) << "nobody listens any more";
}

} // namespace
} // namespace morvelin
