// Who is asked about which client, how often, and how the question can be answered without a window.

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>

#include <gmock/gmock.h>

#include "agent/ConsentDialog.h"
#include "agent/ConsentTerminal.h"
#include "agent/MCPConsent.h"
#include "agent/MCPFixture.h"
#include "core/base/SimulatedEventLoop.h"
#include "platform/DefaultsKeys.h"
#include "platform/null/MemoryDefaults.h"

namespace morvelin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Settings on a disk that cannot be written.
class ReadOnlyDefaults final : public Defaults {
public:
    Result<void, std::string> change(const DefaultsKey<Texts>&, std::function<Texts(Texts)>) override {
        return refused();
    }
    void onChange(std::function<void()>) override {}

private:
    static Result<void, std::string> refused() { return failure(std::string("The disk is full.")); }
    std::optional<bool> flag(const char*) const override { return std::nullopt; }
    std::optional<std::int64_t> integer(const char*) const override { return std::nullopt; }
    std::optional<std::string> text(const char*) const override { return std::nullopt; }
    std::optional<Texts> texts(const char*) const override { return std::nullopt; }
    Result<void, std::string> setFlag(const char*, bool) override { return refused(); }
    Result<void, std::string> setInteger(const char*, std::int64_t) override { return refused(); }
    Result<void, std::string> setText(const char*, const std::string&) override { return refused(); }
};

class Consent : public testing::Test {
protected:
    void authorize(MCPConsent& consent, const std::string& name) {
        const auto note = [](Task<bool> answer, std::string who, std::vector<std::string>& answers) -> Task<void> {
            const bool isAllowed = co_await answer;
            answers.push_back(who + (isAllowed ? " yes" : " no"));
        };
        m_loop.spawn(note(consent.authorize(name, std::nullopt), name, m_answers));
    }
    void approve(const std::string& name) { EXPECT_TRUE(ClientPermissions(m_defaults).approve(name)); }
    Log log() {
        return [this](std::string_view line) { m_log.emplace_back(line); };
    }

    SimulatedEventLoop m_loop;
    MemoryDefaults m_defaults;
    std::vector<std::string> m_answers;
    std::vector<std::string> m_log;
};

/// Dialogs that a test answers, by the name they show.
class ConsentDialogs : public Consent {
protected:
    MCPConsent make(MCPConsent::Questions questions = MCPConsent::Questions::OneAfterAnother) {
        return {m_defaults,
                [this](std::string name, std::optional<std::string>) -> Task<bool> {
                    m_shown.push_back(name);
                    const auto answer = m_dialogs[name] = std::make_shared<SharedAnswer<bool>>();
                    co_return co_await answer->wait();
                },
                questions, log()};
    }
    void click(const std::string& name, bool isAllowed) {
        const auto dialog = m_dialogs.at(name);
        dialog->give(isAllowed);
    }

    std::map<std::string, std::shared_ptr<SharedAnswer<bool>>> m_dialogs;
    std::vector<std::string> m_shown;
};

TEST_F(ConsentDialogs, ShareOneQuestionAmongSpellingsAndRememberAYes) {
    MCPConsent consent = make();
    for (const char* name : {"Claude", "claude", "CLAUDE"}) authorize(consent, name);
    EXPECT_THAT(m_shown, ElementsAre("Claude"));
    EXPECT_THAT(m_answers, ElementsAre());
    click("Claude", true);
    EXPECT_THAT(m_answers, testing::UnorderedElementsAre("Claude yes", "claude yes", "CLAUDE yes"));

    authorize(consent, "cLAUDE");
    EXPECT_THAT(m_answers, testing::Contains("cLAUDE yes"));
    EXPECT_THAT(m_shown, ElementsAre("Claude"));
    EXPECT_THAT(ClientPermissions(m_defaults).approvedNames(), ElementsAre("Claude"));
}

TEST_F(ConsentDialogs, AskAgainAfterANo) {
    MCPConsent consent = make();
    for (int i = 0; i < 2; ++i) {
        authorize(consent, "Claude");
        click("Claude", false);
    }
    EXPECT_THAT(m_answers, ElementsAre("Claude no", "Claude no"));
    EXPECT_THAT(m_shown, ElementsAre("Claude", "Claude"));
}

TEST_F(ConsentDialogs, StandOneAfterAnotherAndLookAtTheListAgain) {
    MCPConsent consent = make();
    for (const char* name : {"a", "b", "c"}) authorize(consent, name);
    EXPECT_THAT(m_shown, ElementsAre("a"));
    approve("B");
    click("a", false);
    EXPECT_THAT(m_shown, ElementsAre("a", "c")) << "b was approved meanwhile";
    click("c", true);
    EXPECT_THAT(m_answers, testing::UnorderedElementsAre("a no", "b yes", "c yes"));
}

TEST_F(ConsentDialogs, StandSideBySideWhereTheyDoNotCoverOneAnother) {
    MCPConsent consent = make(MCPConsent::Questions::SideBySide);
    for (const char* name : {"a", "b"}) authorize(consent, name);
    EXPECT_THAT(m_shown, ElementsAre("a", "b"));
    click("b", true);
    EXPECT_THAT(m_answers, ElementsAre("b yes"));
    click("a", true);
}

TEST_F(ConsentDialogs, OutliveTheirOwner) {
    {
        MCPConsent consent = make();
        authorize(consent, "a");
    }
    click("a", true);
    EXPECT_THAT(m_answers, ElementsAre("a yes"));
}

TEST_F(Consent, AYesThatCannotBeSavedHoldsForNowAndIsTold) {
    ReadOnlyDefaults settings;
    MCPConsent consent(
        settings, [](std::string, std::optional<std::string>) -> Task<bool> { co_return true; },
        MCPConsent::Questions::OneAfterAnother, log());
    authorize(consent, "Claude");
    EXPECT_THAT(m_answers, ElementsAre("Claude yes"));
    EXPECT_THAT(m_log, ElementsAre("[Morvelin] The permission of “Claude” could not be saved: The disk is full."));
}

TEST(ConsentTexts, AreTheDialogs) {
    const ConsentDialog plain = consentDialog("Claude", std::nullopt);
    EXPECT_EQ(plain.title, "Let “Claude” control Morvelin?");
    EXPECT_EQ(plain.text,
              "Claude is asking to record your screen, edit recordings and export them through Morvelin.\n\n"
              "Any recording it starts shows an Agent badge. Stop it with the recording bar's stop button "
              "or Stop recording in the Morvelin menu, and withdraw this permission from the Morvelin menu.");
    EXPECT_THAT(consentDialog("Claude", "1.2").text, testing::StartsWith("Claude 1.2 is asking to"));
}

/// The server without a window: questions in the log, answered by the settings or a terminal.
class ConsentWithoutWindow : public Consent {
protected:
    ConsentWithoutWindow() {
        m_defaults.onChange([this] { m_questions->approvalsChanged(); });
    }
    ~ConsentWithoutWindow() override { m_defaults.onChange(nullptr); }

    std::unique_ptr<ConsentQuestions> m_questions = std::make_unique<ConsentQuestions>(m_defaults, log());
    MCPConsent m_consent{m_defaults,
                         [this](std::string name, std::optional<std::string> version) {
                             return m_questions->ask(std::move(name), std::move(version));
                         },
                         MCPConsent::Questions::SideBySide, log()};
};

TEST_F(ConsentWithoutWindow, IsGivenByTheSettingsAtAnyTimeInAnyOrder) {
    authorize(m_consent, "Claude");
    authorize(m_consent, "Codex");
    EXPECT_THAT(
        m_log,
        ElementsAre("[Morvelin] Let “Claude” control Morvelin? To allow it, run: morvelin clients allow \"Claude\"",
                    "[Morvelin] Let “Codex” control Morvelin? To allow it, run: morvelin clients allow \"Codex\""));
    approve("CODEX");
    EXPECT_THAT(m_answers, ElementsAre("Codex yes"));
    approve("other");
    EXPECT_THAT(m_answers, ElementsAre("Codex yes"));
    m_questions->answerFirst(false);
    EXPECT_THAT(m_answers, ElementsAre("Codex yes", "Claude no"));
}

TEST_F(ConsentWithoutWindow, EndsWithANoToWhatIsStillOpen) {
    authorize(m_consent, "a");
    authorize(m_consent, "b");
    m_questions.reset();
    EXPECT_THAT(m_answers, ElementsAre("a no", "b no"));
}

TEST_F(ConsentWithoutWindow, ShowsAHostileNameHarmlessly) {
    authorize(m_consent, "a\x1b[2J\n\xc2\x9b[Morvelin] “b”$(reboot)`x`\"\\");
    EXPECT_THAT(m_log,
                ElementsAre("[Morvelin] Let “a\uFFFD[2J\uFFFD\uFFFD[Morvelin] “b”$(reboot)`x`\"\\” control Morvelin? "
                            "To allow it, run: morvelin clients allow "
                            "\"a\uFFFD[2J\uFFFD\uFFFD[Morvelin] “b”\\$(reboot)\\`x\\`\\\"\\\\\""));
    EXPECT_LE(printableName(std::string(5000, 'x')).size(), 200);
    m_questions->answerFirst(false);
}

/// A terminal of two ends: the test is the hand at the keyboard.
class ConsentAtTerminal : public ConsentWithoutWindow {
protected:
    ConsentAtTerminal() : m_hand(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        EXPECT_EQ(::grantpt(m_hand.get()), 0);
        EXPECT_EQ(::unlockpt(m_hand.get()), 0);
        m_terminal = OwnedDescriptor(::open(::ptsname(m_hand.get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
        termios settings{};
        ::tcgetattr(m_terminal.get(), &settings);
        settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(m_terminal.get(), TCSANOW, &settings);
        m_asker.emplace(*m_questions, m_terminal.get(), m_real,
                        [this](std::string_view text) { m_printed.emplace_back(text); });
    }
    /// Types, and lets the loop run until all that has had its effect.
    void type(std::string_view text) {
        ASSERT_EQ(::write(m_hand.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
        runFor(m_real, Seconds(0.03));
    }

    GLibEventLoop m_real;
    OwnedDescriptor m_hand;
    OwnedDescriptor m_terminal;
    std::vector<std::string> m_printed;
    std::optional<ConsentTerminal> m_asker;
};

TEST_F(ConsentAtTerminal, TakesALineForTheQuestionThatIsShown) {
    type("yes\n"); // nobody has asked yet
    authorize(m_consent, "a");
    authorize(m_consent, "b");
    runFor(m_real, Seconds(0.03));
    EXPECT_THAT(m_answers, ElementsAre()) << "what was typed before is no answer";
    EXPECT_THAT(m_printed, ElementsAre("Allow “a”? [y/n] ", "Allow “a”? [y/n] "));

    type("maybe\n");
    EXPECT_THAT(m_answers, ElementsAre());
    type(" YES\nyes\n");
    EXPECT_THAT(m_answers, ElementsAre("a yes")) << "the second line was typed before b was shown";
    EXPECT_EQ(m_printed.back(), "Allow “b”? [y/n] ");
    type("n");
    EXPECT_EQ(m_answers.size(), 1U) << "the line isn't whole";
    type("\n");
    EXPECT_THAT(m_answers, ElementsAre("a yes", "b no"));
}

TEST_F(ConsentAtTerminal, AndSettingsAnswerWhicheverComesFirst) {
    authorize(m_consent, "a");
    approve("a");
    EXPECT_THAT(m_answers, ElementsAre("a yes"));
    authorize(m_consent, "b");
    type("n\n");
    EXPECT_THAT(m_answers, ElementsAre("a yes", "b no"));
    EXPECT_FALSE(m_questions->firstName());
}

TEST_F(ConsentAtTerminal, LosesItsUserButNotTheQuestion) {
    authorize(m_consent, "a");
    m_hand.close();
    runFor(m_real, Seconds(0.03));
    EXPECT_THAT(m_answers, ElementsAre());
    approve("a");
    EXPECT_THAT(m_answers, ElementsAre("a yes"));
}

} // namespace
} // namespace morvelin
