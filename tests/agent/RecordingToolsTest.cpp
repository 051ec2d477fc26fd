// The recording tools and their pacing, with a host that notes what is asked of it, on a virtual clock.

#include "agent/DesktopFixture.h"
#include "agent/RecordingTools.h"

namespace morvelin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

class RecordingToolsTest : public DesktopFixture {
protected:
    RecordingToolsTest() {
        m_commands.add("narrate", [this](const ArgumentReader& arguments) -> ToolOutcome {
            if (arguments.number("at").value_or(0) > 10) return failure(std::string("outside"));
            m_written.push_back(*arguments.text("project") + ": " + *arguments.text("text"));
            return JSONValue::object();
        });
        m_tools.addTo(m_commands);
    }
    /// An action of an agent that takes `length`.
    void act(Seconds length) {
        m_pacer.beforeAction();
        m_loop.advance(length);
        m_pacer.afterAction();
    }
    [[nodiscard]] double sinceStart(double time) const { return std::round((time - m_startedAt) * 1000) / 1000; }
    [[nodiscard]] std::vector<std::pair<double, std::string>> pauses() const {
        auto all = m_host.pauses;
        for (auto& [time, what] : all) time = sinceStart(time);
        return all;
    }
    void start(JSONValue arguments = {}) {
        facts("start_recording", std::move(arguments));
        m_startedAt = m_loop.now().value;
    }

    std::vector<std::string> m_written;
    double m_startedAt = 0;
    RecordingTools m_tools{{m_loop, &m_host, &m_input}, m_pacer};
};

TEST_F(RecordingToolsTest, ThinkingIsPausedAndActionsAreNot) {
    start();
    m_loop.advance(0.3_s);
    act(0.35_s); // from 0.3 to 0.65
    m_loop.advance(0.39_s);
    act(0.1_s); // from 1.04 to 1.14: nothing was paused so far
    EXPECT_THAT(pauses(), IsEmpty());
    m_loop.advance(5_s); // thinking: paused at 1.54
    act(0.5_s);          // from 6.14 to 6.64
    m_loop.advance(2_s); // paused at 7.04
    EXPECT_THAT(pauses(), ElementsAre(Pair(1.54, "pause"), Pair(6.14, "resume"), Pair(7.04, "pause")));
    const JSONValue stopped = facts("stop_recording");
    EXPECT_EQ(stopped["idle_spans_removed"], 2);
    EXPECT_EQ(pauses().back().second, "resume") << "a take that stands paused goes on before it ends";
    EXPECT_EQ(stopped["project"], "/home/Take.morvelin");
    EXPECT_EQ(stopped["duration"], 4.2);
    EXPECT_FALSE(stopped.contains("narration_lines"));
}

TEST_F(RecordingToolsTest, AnActionOfOneClientIsNoThinkingOfAnother) {
    start();
    m_pacer.beforeAction();
    m_loop.advance(0.2_s);
    m_pacer.beforeAction(); // a second client's, which ends first
    m_pacer.afterAction();
    m_loop.advance(3_s);
    EXPECT_THAT(pauses(), IsEmpty());
    m_pacer.afterAction();
    m_loop.advance(0.5_s);
    EXPECT_EQ(pauses().size(), 1U);
}

TEST_F(RecordingToolsTest, AnAgentsOwnPauseLastsUntilItResumes) {
    start();
    m_loop.advance(1_s); // paused by the pacer
    EXPECT_EQ(facts("pause_recording")["paused"], true);
    m_host.pauses.clear();
    act(1_s);
    m_loop.advance(1_s);
    EXPECT_THAT(m_host.pauses, IsEmpty());
    EXPECT_EQ(facts("resume_recording")["paused"], false);
    m_loop.advance(1_s); // and thinking is paused again
    EXPECT_EQ(facts("stop_recording")["idle_spans_removed"], 2);
}

TEST_F(RecordingToolsTest, PacingEndsWithATakeThatTheUserStops) {
    start();
    m_host.recording = {};
    act(1_s);
    m_loop.advance(1_s);
    EXPECT_FALSE(m_pacer.isPacing());
    EXPECT_THAT(m_host.pauses, IsEmpty());
    EXPECT_EQ(refused("stop_recording"), "No recording is in progress.");
    EXPECT_EQ(refused("pause_recording"), "No recording is in progress.");

    EXPECT_EQ(facts("start_recording", {{"pace_to_actions", "false"}})["note"],
              "Recording runs continuously, including between your actions.");
    m_loop.advance(5_s);
    EXPECT_THAT(m_host.pauses, IsEmpty());
}

TEST_F(RecordingToolsTest, AStartTellsWhatItNeeds) {
    struct Case {
        JSONValue arguments;
        const char* says;
    };
    for (const auto& [arguments, says] : std::vector<Case>{
             {{{"source", "tab"}}, "“source”: expected display, window or area, got “tab”"},
             {{{"source", 5}}, "“source”: expected display, window or area, got “5”"},
             {{{"source", "window"}}, "“window_title”: source “window” needs a window_title to match"},
             {{{"source", "area"}}, "source “area” needs a rect: there is no one to drag out a selection"},
             {{{"source", "area"}, {"rect", {{"x", 0}, {"y", 0}, {"width", 0}, {"height", 5}}}},
              "“rect”: expected x, y, width and height, with a positive size"},
             {{{"source", "area"}, {"rect", 5}}, "expected x, y, width and height, with a positive size"},
             {{{"display_id", "main"}}, "“display_id”: expected a display ID from recording_status.displays"},
         })
        EXPECT_THAT(refused("start_recording", arguments), HasSubstr(says));
    EXPECT_THAT(m_host.requests, IsEmpty());

    const auto& first = begin("start_recording", {{"source", "area"},
                                                  {"rect", {{"x", "1"}, {"y", 2}, {"width", 30}, {"height", 40}}},
                                                  {"display_id", "7"},
                                                  {"microphone", "true"}});
    EXPECT_EQ(refused("start_recording"),
              "A recording start is already in progress. Wait for it to finish before trying again.");
    ASSERT_TRUE(first && !first->isError);
    EXPECT_EQ(m_host.requests.back().rect, (PointRect{1, 2, 30, 40}));
    EXPECT_EQ(m_host.requests.back().displayID, 7U);
    EXPECT_TRUE(m_host.requests.back().microphone && !m_host.requests.back().camera);
    EXPECT_EQ((*first->structured)["paced"], true);
    EXPECT_EQ(refused("start_recording"), "A recording is already in progress. Call stop_recording first.");
    EXPECT_TRUE(m_pacer.isPacing()) << "the refusal leaves the take's pacing alone";
}

TEST_F(RecordingToolsTest, TheStatusIsWhole) {
    m_host.recording = inTake();
    m_host.recording.isPaused = true;
    m_host.recording.elapsed = 2.9_s;
    EXPECT_EQ(facts("recording_status"),
              (JSONValue{{"recording", true},
                         {"paused", true},
                         {"elapsed", 2},
                         {"agent_driven", true},
                         {"can_control_pointer", true},
                         {"can_capture_screen", true},
                         {"source", "display"},
                         {"displays",
                          {{{"id", 7}, {"name", "left"}, {"width", 1000.0}, {"height", 500.0}},
                           {{"id", 9}, {"name", "right"}, {"width", 800.0}, {"height", 500.0}}}}}));
}

TEST_F(RecordingToolsTest, LinesOfATakeAreWrittenAtItsEnd) {
    start({{"pace_to_actions", false}});
    m_host.recording.elapsed = 1.2345_s;
    EXPECT_EQ(facts("narrate", {{"text", " First. "}}),
              (JSONValue{{"text", "First."},
                         {"at", 1.235},
                         {"pending", true},
                         {"note", "Stamped at the current point in the recording and written when you call "
                                  "stop_recording."}}));
    m_host.recording.elapsed = 20_s;
    facts("narrate", {{"text", "Too late."}, {"duration", 2}});
    EXPECT_EQ(refused("narrate", {{"text", " "}}), "Narration text is empty.");
    EXPECT_EQ(refused("narrate"), "Invalid value for “text”: expected something to say");
    facts("narrate", {{"text", "Elsewhere."}, {"at", 1}, {"project", "/home/Other"}});
    const JSONValue stopped = facts("stop_recording");
    EXPECT_EQ(stopped["narration_lines"], 1);
    EXPECT_EQ(stopped["narration_failed"], 1);
    EXPECT_THAT(m_written, ElementsAre("/home/Other: Elsewhere.", "/home/Take.morvelin: First."));
}

TEST_F(RecordingToolsTest, LinesOfATakeThatEndsByItselfAreKeptToo) {
    start();
    facts("narrate", {{"text", "So far."}});
    m_host.recording = {};
    m_host.recording.endedByItself = m_host.finished;
    m_host.onEndedByItself(m_host.finished);
    EXPECT_THAT(m_written, ElementsAre("/home/Take.morvelin: So far."));
    EXPECT_FALSE(m_pacer.isPacing());
    EXPECT_EQ(facts("recording_status")["ended_by_itself"]["name"], "Take");
}

TEST(RecordingToolsWithoutHost, SayThatNothingRecords) {
    SimulatedEventLoop loop;
    AgentRecordingPacer pacer(loop);
    RecordingTools tools({loop}, pacer);
    CommandTable commands;
    commands.add("narrate", [](const ArgumentReader&) -> ToolOutcome { return JSONValue::object(); });
    tools.addTo(commands);
    for (const char* tool : {"start_recording", "stop_recording", "pause_recording", "resume_recording"}) {
        std::optional<MCPToolResult> result;
        const auto run = [&]() -> Task<void> { result = co_await (*commands.find(tool))({}); };
        loop.spawn(run());
        ASSERT_TRUE(result) << tool;
        EXPECT_EQ(result->text, "Morvelin is not ready to record yet. Try again in a moment.");
    }
}

} // namespace
} // namespace morvelin
