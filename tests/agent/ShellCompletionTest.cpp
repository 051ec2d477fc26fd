// The completion scripts in the shells themselves: what they offer at a place of the command line.

#include <array>
#include <cstdio>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "agent/ShellCompletion.h"
#include "base/TemporaryFolder.h"

namespace morvelin {
namespace {

using Kind = CompletedWord::Kind;

CompletedCommand program() {
    const CompletedWord client{Kind::Choice, {"claudeCode", "codex"}};
    const CompletedWord quality{Kind::Choice, {"low", "high", "ultra"}};
    return {"morvelin",
            "",
            {{"--version", "the version", {}}},
            {},
            {{"record", "a take", {{"--display", "it's the display", {Kind::Text, {}}}, {"--camera", "", {}}}, {}, {}},
             {"export",
              "a video",
              {{"--quality", "how good", quality}, {"--output", "", {Kind::File, {}}}},
              {{Kind::File, {}}},
              {}},
             {"call", "a tool", {}, {{Kind::ToolArguments, {}}}, {}},
             {"clients", "agents", {}, {}, {{"list", "", {}, {}, {}}, {"install", "", {}, {client}, {}}}}}};
}

class ShellCompletionTest : public ::testing::Test {
protected:
    /// Runs a script of that shell beside the completion script `completion`; gives what it printed.
    std::string run(Shell shell, const std::string& driver) {
        const std::string name(json::rawValue(shell));
        put(m_folder.path() / "completion", completionScript(shell, program(), toolCatalogue()));
        put(m_folder.path() / "driver", driver);
        put(m_folder.path() / "talk.mp4", "");
        const std::string command = fmt::format("cd '{}' && HOME=$PWD LC_ALL=C.UTF-8 {} {} ./driver 2>&1",
                                                m_folder.path().string(), name, shell == Shell::Zsh ? "-f" : "");
        std::string printed;
        std::FILE* pipe = ::popen(command.c_str(), "r");
        std::array<char, 4096> part{};
        while (const std::size_t got = std::fread(part.data(), 1, part.size(), pipe)) printed.append(part.data(), got);
        EXPECT_EQ(::pclose(pipe), 0) << printed;
        return printed;
    }
    static bool isInstalled(Shell shell) {
        return std::system(fmt::format("command -v {} >/dev/null", json::rawValue(shell)).c_str()) == 0;
    }

    TemporaryFolder m_folder;
};

TEST_F(ShellCompletionTest, BashOffersWhatFits) {
    struct Case {
        const char* line;
        const char* words; ///< as bash parts the line
        const char* offered;
    };
    const std::initializer_list<Case> cases{
        {"morvelin ", "morvelin ''", "record export call clients"},
        {"morvelin c", "morvelin c", "call clients"},
        {"morvelin clients ", "morvelin clients ''", "list install"},
        {"morvelin clients install c", "morvelin clients install c", "claudeCode codex"},
        {"morvelin record --", "morvelin record --", "--display --camera"},
        {"morvelin record --display ", "morvelin record --display ''", ""},
        {"morvelin record --display export --ca", "morvelin record --display export --ca", "--camera"},
        {"morvelin export --quality ", "morvelin export --quality ''", "low high ultra"},
        {"morvelin export --quality=u", "morvelin export --quality = u", "ultra"},
        {"morvelin export --quality u ", "morvelin export --quality u ''", "[-o default]"},
        {"morvelin call cl", "morvelin call cl", "click clear_narration"},
        {"morvelin call wait ", "morvelin call wait ''", "[-o nospace] seconds="},
        {"morvelin call move_mouse y=1 x= d", "morvelin call move_mouse y = 1 x = d",
         "[-o nospace] [-o nospace] display_id= duration="},
        {"morvelin call move_mouse duration=1 d", "morvelin call move_mouse duration = 1 d",
         "[-o nospace] display_id="},
        {"morvelin call click button=", "morvelin call click button =", "left right middle"},
        {"morvelin call click button=m", "morvelin call click button = m", "middle"},
        {"morvelin call export for_ai=t", "morvelin call export for_ai = t", "true"},
        {"morvelin call export project=x", "morvelin call export project = x", "[-o default]"},
        {"morvelin call nothing ", "morvelin call nothing ''", ""},
        {"morvelin call click button=mleft", "morvelin call click button = mleft", ""}};
    std::string driver = "source ./completion\ncompopt() { echo -n \"[$*] \"; }\n"
                         "try() { COMP_LINE=$1 COMP_POINT=${#1} COMP_WORDS=(\"${@:2}\") COMP_CWORD=$(($# - 2))\n"
                         "    _morvelin; echo \"${COMPREPLY[*]}\"; }\n";
    std::string expected;
    for (const Case& c : cases) {
        driver += fmt::format("try '{}' {}\n", c.line, c.words);
        const std::string offered = c.offered;
        expected += offered + (offered.ends_with(']') ? " \n" : "\n");
    }
    // Where "=" parts no words, the whole word is the answer.
    driver += "COMP_WORDBREAKS=' '\ntry 'morvelin call click button=m' morvelin call click button=m\n";
    EXPECT_EQ(run(Shell::Bash, driver), expected + "button=middle\n");
}

TEST_F(ShellCompletionTest, FishOffersWhatFits) {
    if (!isInstalled(Shell::Fish)) GTEST_SKIP() << "fish is not installed";
    std::string driver = "source ./completion\n";
    for (const char* line :
         {"morvelin clients ", "morvelin record --d", "morvelin record --display ", "morvelin export --quality=u",
          "morvelin export tal", "morvelin call clic", "morvelin call wait ", "morvelin call click x=1 button=1 ",
          "morvelin call click button=m", "morvelin call export project=tal"})
        driver += fmt::format("complete -C '{}'; echo .\n", line);
    EXPECT_EQ(run(Shell::Fish, driver),
              "install\nlist\n.\n--display\tit's the display\n.\n.\n--quality=ultra\n.\ntalk.mp4\n.\n"
              "click\tClick at a position\n.\nseconds=\tHow long to wait\n.\n"
              "count=\t1 for a click, 2 for a double-click\ndisplay_id=\tWhich display the position is on\n"
              "y=\tVertical position 0–1, top-left origin\n.\nbutton=middle\n.\nproject=talk.mp4\n.\n");
}

TEST_F(ShellCompletionTest, ZshOffersWhatFits) {
    if (!isInstalled(Shell::Zsh)) GTEST_SKIP() << "zsh is not installed";
    // A shell at a terminal of its own, typed at. Control-] writes its line down and empties it.
    put(m_folder.path() / ".zshrc", "autoload -U compinit; compinit -u -D; source ./completion\n"
                                    "note() { print -r -- \"$BUFFER|\" >>typed; BUFFER=; }\n"
                                    "zle -N note; bindkey '^]' note; precmd() { echo ready >>typed }\n");
    const std::string driver = R"(
        zmodload zsh/zpty; export ZDOTDIR=$PWD TERM=dumb; : >typed
        zpty shell zsh -i
        await() { local -i i; for ((i = 0; i < 500 && $(wc -l <typed) < $1; i++)) { sleep 0.02; zpty -r -t shell; } >/dev/null }
        await 1
        integer lines=1
        for line in 'cli' 'clients ins' 'clients install cod' 'record --disp' 'export --quality=u' 'export tal' \
            'call clic' 'call click bu' 'call click button=m' 'call wait ' 'call export project=tal'; do
            zpty -w -n shell "morvelin $line"$'\t\x1d'
            await $((++lines))
        done
        zpty -d shell
        cat typed
    )";
    EXPECT_EQ(run(Shell::Zsh, driver), "ready\nmorvelin clients |\nmorvelin clients install |\n"
                                       "morvelin clients install codex |\nmorvelin record --display |\n"
                                       "morvelin export --quality=ultra |\nmorvelin export talk.mp4 |\n"
                                       "morvelin call click |\nmorvelin call click button=|\n"
                                       "morvelin call click button=middle |\nmorvelin call wait seconds=|\n"
                                       "morvelin call export project=talk.mp4 |\n");
}

TEST_F(ShellCompletionTest, EveryShellReadsTheSameTable) {
    std::string places = "'operand:call 1' 'options:record'";
    for (const MCPTool& tool : toolCatalogue()) places += fmt::format(" 'arguments:{}'", tool.name);
    const std::string loop = fmt::format("source ./completion\nfor place in {}; do _morvelin_table \"$place\"; done\n",
                                         places);
    const std::string fishLoop = fmt::format("source ./completion\nfor place in {}; __morvelin_table $place; end\n",
                                             places);

    const std::string table = run(Shell::Bash, loop);
    EXPECT_NE(table.find("--display\tit's the display\n"), std::string::npos);
    for (const MCPTool& tool : toolCatalogue()) {
        EXPECT_NE(table.find(tool.name + "\t"), std::string::npos) << tool.name;
        for (const auto& [name, schema] : tool.inputSchema.at("properties").items())
            EXPECT_NE(table.find("\n" + name + "=\t"), std::string::npos) << tool.name << " " << name;
    }
    if (isInstalled(Shell::Zsh)) { EXPECT_EQ(run(Shell::Zsh, "compdef() {}\n" + loop), table); }
    if (isInstalled(Shell::Fish)) { EXPECT_EQ(run(Shell::Fish, fishLoop), table); }
}

} // namespace
} // namespace morvelin
