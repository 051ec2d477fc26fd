// The pointer, keyboard and waiting tools on a virtual clock: their events, times, sentences, and turns.

#include "agent/DesktopFixture.h"
#include "agent/InputTools.h"
#include "platform/null/NullPointerSource.h"
#include "platform/null/NullScreenSource.h"

namespace morvelin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

class InputToolsTest : public DesktopFixture {
protected:
    InputToolsTest() { m_tools.addTo(m_commands); }

    NullScreenSource m_screen{{ScreenError::Kind::NoDisplayServer, "There is no screen."}};
    NullPointerSource m_pointer;
    InputTools m_tools{{m_loop, m_host, m_input, ScreenCapturer(m_loop, m_screen, m_pointer)}, m_pacer};
};

TEST_F(InputToolsTest, AMoveIsEasedAndKeepsItsTimes) {
    m_input.place = {0, 0};
    const JSONValue moved = facts("move_mouse", {{"x", "0.5"}, {"y", 1}, {"duration", 0.5}});
    EXPECT_EQ(moved["space"], "left");
    ASSERT_EQ(m_input.noted.size(), 60U);
    EXPECT_EQ(m_input.noted.back().second, "move 500 499");
    EXPECT_EQ(m_input.noted[29].second, "move 250 250") << "half the way in half the time";
    EXPECT_EQ(m_input.noted[5].second, "move 14 14") << "slow at first";
    for (std::size_t step = 0; step < 60; ++step)
        EXPECT_NEAR(m_input.noted[step].first, static_cast<double>(step) / 120, 1e-9);
    EXPECT_NEAR(m_loop.now().value, 0.5, 0.0011);

    m_input.noted.clear();
    facts("move_mouse", {{"x", 0}, {"y", 0}, {"duration", 0}, {"display_id", 9}});
    EXPECT_THAT(m_input.noted, ElementsAre(Pair(testing::_, "move 1000 0")));
}

TEST_F(InputToolsTest, PositionsSpanTheRecordedAreaInATake) {
    m_host.recording.isRecording = true;
    const JSONValue clicked = facts("click", {{"x", 0.5}, {"y", 1}, {"display_id", "no such"}, {"button", "middle"}});
    EXPECT_EQ(clicked,
              (JSONValue{{"clicked", "middle"}, {"count", 1}, {"x", 0.5}, {"y", 1.0}, {"space", "the recorded area"}}));
    EXPECT_EQ(m_input.place.x, 200);
    EXPECT_EQ(m_input.place.y, 149);
    EXPECT_EQ(m_input.events("down").at(0).second, "down 2");
}

TEST_F(InputToolsTest, ADoubleClickComesWithTheMoveBeforeIt) {
    facts("click", {{"x", 0.1}, {"y", 0.1}, {"count", 2}});
    EXPECT_EQ(m_input.events("move").size(), 42U);
    const auto downs = m_input.events("down");
    const auto ups = m_input.events("up");
    ASSERT_EQ(downs.size(), 2U);
    ASSERT_EQ(ups.size(), 2U);
    EXPECT_NEAR(downs[0].first, 0.35, 1e-9);
    EXPECT_NEAR(ups[0].first, 0.35, 1e-9);
    EXPECT_NEAR(downs[1].first, 0.41, 1e-9);
}

TEST_F(InputToolsTest, ADragMovesWhileTheButtonIsDown) {
    for (const auto& [duration, steps, length] : {std::tuple{0.6, 72U, 0.6}, {0.02, 12U, 0.1}, {-1.0, 12U, 0.1}}) {
        m_input.noted.clear();
        const JSONValue dragged = facts(
            "drag", {{"from_x", 0.1}, {"from_y", 0.1}, {"to_x", 0.9}, {"to_y", 0.5}, {"duration", duration}});
        EXPECT_EQ(dragged["duration"], length);
        const double down = m_input.events("down").at(0).first;
        const double up = m_input.events("up").at(0).first;
        EXPECT_NEAR(up - down, length, 1e-9);
        EXPECT_EQ(m_input.events("move").size(), 42 + steps);
        EXPECT_EQ(m_input.noted.back().second, "up 0");
        EXPECT_EQ(m_input.place.x, 900);
    }
}

TEST_F(InputToolsTest, AScrollTurnsTheWheelByItsPixelsInAll) {
    struct Case {
        int dx, dy;
        double duration;
        std::array<int, 4> notches; ///< up, down, left, right
    };
    for (const auto& [dx, dy, duration, notches] :
         {Case{0, 1000, 0.7, {0, 19, 0, 0}}, Case{0, -530, 0, {10, 0, 0, 0}}, Case{-60, 106, 2, {0, 2, 1, 0}},
          Case{0, 5, 0.7, {0, 1, 0, 0}}, Case{700, 0, 0.1, {0, 0, 0, 13}}}) {
        m_input.notches = {};
        m_input.noted.clear();
        EXPECT_EQ(facts("scroll", {{"dx", dx}, {"dy", dy}, {"duration", duration}}),
                  (JSONValue{{"dx", dx}, {"dy", dy}, {"duration", duration}}));
        EXPECT_EQ(m_input.notches, notches) << dx << " " << dy;
        EXPECT_LE(m_input.events("wheel").size(), 84U);
    }
    m_input.noted.clear();
    EXPECT_EQ(facts("scroll", {{"dy", 1e9}, {"duration", 0}, {"x", 0.2}, {"y", 0.2}})["dy"], 100'000);
    EXPECT_EQ(m_input.noted.front().second, "move 200 100");
}

TEST_F(InputToolsTest, TextIsTypedByWholeCharactersAtItsPace) {
    EXPECT_EQ(facts("type", {{"text", "e\u0301👩‍👧🇩🇪한\r\n"}, {"delay", 0.1}})["typed"], 5);
    EXPECT_EQ(m_input.typed, U"e\u0301👩‍👧🇩🇪한\r");
    EXPECT_NEAR(m_input.noted.back().first, 0.4, 1e-9);

    // 2,000 characters without a pause leave others their turn.
    std::string text;
    for (int i = 0; i < 2000; ++i) text += static_cast<char>('a' + i % 26);
    m_input.typed.clear();
    const double before = m_loop.now().value;
    EXPECT_EQ(facts("type", {{"text", text}, {"delay", 0}})["typed"], 2000);
    EXPECT_TRUE(std::ranges::equal(m_input.typed, text));
    EXPECT_NEAR(m_loop.now().value, before, 0.002);
}

TEST_F(InputToolsTest, KeysAreNamedInManyWays) {
    struct Case {
        std::string key;
        JSONValue modifiers;
        std::string pressed; ///< or what the refusal says
    };
    const int control = static_cast<int>(Key::Control);
    const int letter = static_cast<int>(Key::S);
    const std::vector<std::string> save{fmt::format("key down {}", control), fmt::format("key down {}", letter),
                                        fmt::format("key up {}", letter), fmt::format("key up {}", control)};
    for (const auto& [key, modifiers, pressed] : std::vector<Case>{
             {"cmd+s", {}, "ctrl+s"},
             {"cmd-s", {}, "ctrl+s"},
             {"S", {"CMD"}, "ctrl+s"},
             {"s", "ctrl", "ctrl+s"},
             {"shift+command+ctrl+p", {}, "ctrl+shift+p"},
             {"meta+opt+left", {}, "meta+alt+left"},
             {"esc", {}, "escape"},
             {"fn+f5", {}, "f5"},
             {"0", {"shift"}, "shift+0"},
             {"delete", {}, "delete"},
             {"shift+a+b", {}, "Unknown key “shift+a+b”. Use a character, or a name like return, tab, escape or f5."},
             {"-", {}, "Unknown key “-”. Use a character, or a name like return, tab, escape or f5."},
             {"ctrl+", {}, "Unknown key “ctrl+”. Use a character, or a name like return, tab, escape or f5."},
             {"cmd", {}, "Unknown key “cmd”. Use a character, or a name like return, tab, escape or f5."},
             {"a", {"hyper"}, "Unknown modifier “hyper”. Use cmd, shift, alt or ctrl."},
             {"a", JSONValue::array({5}), "Unknown modifier “5”. Use cmd, shift, alt or ctrl."},
             {"", {}, "Invalid value for “key”: expected a key to press"},
         }) {
        m_input.noted.clear();
        const JSONValue arguments{{"key", key}, {"modifiers", modifiers}};
        if (pressed.starts_with("Unknown") || pressed.starts_with("Invalid")) {
            EXPECT_EQ(refused("press_key", arguments), pressed);
            EXPECT_TRUE(m_input.noted.empty());
            continue;
        }
        EXPECT_EQ(facts("press_key", arguments)["pressed"], pressed) << key;
        std::vector<std::string> events;
        for (const auto& [time, event] : m_input.noted) events.push_back(event);
        if (pressed == "ctrl+s") { EXPECT_EQ(events, save) << key; }
    }
}

TEST_F(InputToolsTest, WhatCannotBeDoneIsSaid) {
    constexpr const char* kWhere =
        "expected normalized 0–1 coordinates, top-left origin. Take a screenshot to see where "
        "things are";
    struct Case {
        const char* tool;
        JSONValue arguments;
        const char* says;
    };
    for (const auto& [tool, arguments, says] : std::vector<Case>{
             {"click", {{"x", 250}, {"y", 0}}, "250.0 is outside 0–1. These are fractions of the screen, not pixels."},
             {"click", {{"x", 0.5}}, kWhere},
             {"click", {{"x", "nan"}, {"y", 1}}, kWhere},
             {"move_mouse", {{"x", 0}, {"y", -0.1}}, "“y”: -0.1 is outside 0–1."},
             {"drag", {{"from_x", 0}, {"from_y", 0}}, kWhere},
             {"click",
              {{"x", 0}, {"y", 0}, {"button", "top"}},
              "Unknown mouse button “top”. Use left, right or middle."},
             {"click", {{"x", 0}, {"y", 0}, {"display_id", 3}}, "Nowhere to aim: display 3 is not connected"},
             {"click",
              {{"x", 0}, {"y", 0}, {"display_id", "first"}},
              "expected a display ID from recording_status.displays"},
             {"scroll", {{"dx", 0}, {"dy", 0.7}}, "expected a distance to scroll"},
             {"scroll", {{"dy", 5}, {"x", 0.7}}, kWhere},
             {"type", {{"text", ""}}, "expected something to type"},
             {"wait", {{"seconds", "soon"}}, "expected a number of seconds"},
             {"screenshot", {{"display_id", 3}}, "Display 3 is not connected."},
             {"screenshot", {}, "Could not capture the screen: There is no screen."},
         })
        EXPECT_THAT(refused(tool, arguments), HasSubstr(says)) << tool << arguments;
    EXPECT_TRUE(m_input.noted.empty()) << "nothing was posted";

    m_host.shown.clear();
    EXPECT_EQ(refused("click", {{"x", 0}, {"y", 0}}), "Nowhere to aim: no display is available");
    EXPECT_EQ(refused("screenshot"), "No display available to capture.");
    m_input.missing = InputPostingError{InputPostingError::Kind::Unavailable, "There is no desktop."};
    for (const auto& [tool, arguments] : {std::pair<const char*, JSONValue>{"click", {{"x", 0}, {"y", 0}}},
                                          {"type", {{"text", "a"}}},
                                          {"press_key", {{"key", "a"}}},
                                          {"scroll", {{"dy", 100}}}})
        EXPECT_EQ(refused(tool, arguments), "There is no desktop.");
    EXPECT_EQ(facts("wait", {{"seconds", 0.5}})["waited"], 0.5);
}

TEST_F(InputToolsTest, AWaitEndsAfterHalfAMinute) {
    EXPECT_EQ(facts("wait", {{"seconds", 100}})["waited"], 30);
    EXPECT_NEAR(m_loop.now().value, 30, 0.01);
}

TEST_F(InputToolsTest, GesturesOfTenClientsNeverMix) {
    std::vector<const std::optional<MCPToolResult>*> results;
    for (int client = 0; client < 10; ++client)
        results.push_back(&begin(
            "drag", {{"from_x", 0.1 * client}, {"from_y", 0}, {"to_x", 0.1 * client}, {"to_y", 1}, {"duration", 0.2}}));
    m_loop.advance(10 * 0.55_s + 0.01_s);
    for (const auto* result : results) EXPECT_TRUE(*result);
    std::string order;
    for (const auto& [time, event] : m_input.noted)
        if (!event.starts_with("move")) order += event[0];
    EXPECT_EQ(order, "dudududududududududu");
}

} // namespace
} // namespace morvelin
