// What agents read about projects: lists, whole descriptions and narrowed ones, resources, events.

#include <gmock/gmock.h>

#include "agent/RouterFixture.h"
#include "agent/ToolCatalogue.h"
#include "core/Transcript.h"
#include "storage/TranscriptFile.h"

namespace morvelin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class ReadingToolsTest : public RouterFixture {
protected:
    /// A project with one of each thing that a description lists.
    std::filesystem::path addEditedProject() {
        const auto bundle = addProject("Tour");
        edit(bundle, [this](EditPayload& edit) {
            edit.fragments = {{m_ids.next(), SourceTime(0), SourceTime(4), 1, 0, {}},
                              {m_ids.next(), SourceTime(6), SourceTime(10), 2, 1, {}}};
            edit.zoomKeyframes = {{m_ids.next(), EditTime(0), 0_s, 1, ZoomTransitionType::Smooth, false},
                                  {m_ids.next(), EditTime(1), 0.5_s, 2, ZoomTransitionType::Smooth, false},
                                  {m_ids.next(), EditTime(4), 0.5_s, 1, ZoomTransitionType::Linear, true}};
            PositionKeyframe key = PositionKeyframe::baseline(m_ids);
            key.time = EditTime(1.5);
            key.targetX = 0.9;
            key.zoomKeyframeID = edit.zoomKeyframes[1].id;
            edit.positionKeyframes = {PositionKeyframe::baseline(m_ids), key};
            edit.focusKeyframes = {{m_ids.next(),
                                    EditTime(2),
                                    EditTime(3),
                                    {0.1, 0.2, 0.3, 0.4},
                                    0.5_s,
                                    EffectTarget{EffectTarget::Kind::Button, "Export"},
                                    {}}};
            edit.maskKeyframes = {{m_ids.next(), EditTime(0), EditTime(6), {0, 0, 0.5, 0.12345}, 24}};
            edit.tapTapKeyframes = {{m_ids.next(), EditTime(5), EditTime(5.9), 0.5, 0.25, 0.12, {}}};
            edit.padding = 0;
        });
        FounderSourceTranscript transcript{"test", "en", m_clock.date, {}};
        transcript.segments = {{SourceTime(1), SourceTime(2), "Hello.", 1, {}},
                               {SourceTime(4.5), SourceTime(5.5), "Cut away.", 1, {}},
                               {SourceTime(5), SourceTime(7), "Half of it.", 1, {}}};
        EXPECT_TRUE(ProjectBundle::writeTranscript(transcript, bundle));
        return bundle;
    }
};

TEST_F(ReadingToolsTest, ListsProjectsWithoutMindingTheirHealth) {
    EXPECT_EQ(facts("list_projects")["projects"], JSONValue::array()) << "there is no folder yet";
    const auto bundle = addProject("Tour");
    put(m_folders.projects.path() / "Broken.morvelin" / "capture.json", "{");
    std::filesystem::last_write_time(bundle / "capture.json",
                                     std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
    const JSONValue list = facts("list_projects");
    EXPECT_EQ(list["directory"], m_folders.projects.path().string());
    ASSERT_EQ(list["projects"].size(), 2U);
    EXPECT_EQ(list["projects"][0]["path"], bundle.string());
    EXPECT_EQ(list["projects"][0]["duration"], 10);
    EXPECT_EQ(list["projects"][0]["created"], "2026-11-21T04:10:33Z");
    EXPECT_EQ(list["projects"][1]["name"], "Broken");
    EXPECT_FALSE(list["projects"][1].contains("duration"));
    EXPECT_EQ(facts("list_projects", {{"limit", "1"}})["projects"].size(), 1U);
    EXPECT_EQ(facts("list_projects", {{"limit", 0}})["projects"].size(), 0U);
    EXPECT_EQ(facts("list_projects", {{"limit", -3}})["projects"].size(), 0U);
}

TEST_F(ReadingToolsTest, DescribesWhatTheEditShows) {
    addEditedProject();
    const JSONValue project = facts("describe_project");
    EXPECT_EQ(project["version"], "Version 1");
    EXPECT_EQ(project["duration"], 6) << "four seconds, and four at double speed";
    EXPECT_EQ(project["original_duration"], 10);
    EXPECT_EQ(project["clicks"], 1);
    EXPECT_TRUE(project["click_landmarks"].empty()) << "the click at 5 s was cut";
    EXPECT_EQ(project["fragments"][1], (JSONValue{{"start", 4.0}, {"end", 6.0}, {"speed", 2.0}}));
    const JSONValue& zoom = project["zooms"][1];
    EXPECT_EQ(zoom["end"], 1.5);
    EXPECT_EQ(zoom["x"], 0.9);
    EXPECT_FALSE(project["zooms"][2].contains("x"));
    const JSONValue& key = project["positions"][1];
    EXPECT_EQ(key["zoom_id"], zoom["id"]);
    EXPECT_EQ(key["x"], 0.9);
    EXPECT_EQ(key["framed_x"], 0.75) << "at 2 × the frame's centre stays a quarter away from the edge";
    ASSERT_EQ(project["annotations"].size(), 3U);
    EXPECT_EQ(project["annotations"][0]["rect"]["height"], 0.123);
    EXPECT_EQ(project["annotations"][1]["label"], "Export");
    EXPECT_EQ(project["annotations"][1]["target_kind"], "button");
    EXPECT_EQ(project["annotations"][2]["type"], "taptap");
    EXPECT_EQ(project["narration"], (JSONValue{{{"at", 1.0}, {"until", 2.0}, {"text", "Hello."}},
                                               {{"at", 4.0}, {"until", 4.5}, {"text", "Half of it."}}}));
    EXPECT_EQ(project["transcript"], (JSONValue{{"exists", true}, {"segments", 3}, {"language", "en"}}));
    EXPECT_EQ(project["audio_tracks"][0]["track"], "original");
    EXPECT_EQ(project["style"]["background"], (JSONValue{{"type", "gradient"}, {"name", "palette-dune"}}));
    EXPECT_EQ(project["style"]["cursor_drawn"], false);
    EXPECT_FALSE(project["style"].contains("cursor_size"));
    EXPECT_FALSE(project.contains("camera"));
    EXPECT_FALSE(project.contains("window"));
    EXPECT_THAT(project["versions"][0]["name"], "Original");
    EXPECT_EQ(project["versions"][0]["locked"], true);
}

TEST_F(ReadingToolsTest, ASpanKeepsWhatDecidesHowItOpens) {
    addEditedProject();
    const JSONValue project = facts("describe_project", {{"from", 2.5}, {"until", "3.5"}});
    ASSERT_EQ(project["zooms"].size(), 2U) << "the ramp before and the one after";
    EXPECT_EQ(project["zooms"][0]["start"], 1);
    EXPECT_EQ(project["positions"].size(), 1U);
    EXPECT_EQ(project["fragments"].size(), 1U);
    EXPECT_TRUE(project["narration"].empty());
    EXPECT_EQ(project["annotations"].size(), 2U) << "the mask and the focus reach into it";
    const JSONValue& window = project["window"];
    EXPECT_EQ(window["zoom_at_from"], 2);
    EXPECT_EQ(facts("describe_project", {{"from", 1.5}})["window"]["framed_at_from"],
              (JSONValue{{"x", 0.75}, {"y", 0.5}}));
    EXPECT_EQ(window["totals"], (JSONValue{{"fragments", 2},
                                           {"click_landmarks", 0},
                                           {"zooms", 3},
                                           {"positions", 2},
                                           {"annotations", 3},
                                           {"narration", 2}}));
    EXPECT_EQ(facts("describe_project", {{"until", 2}})["window"]["from"], 0);
    EXPECT_EQ(facts("describe_project", {{"from", 5}})["window"]["until"], 6);
    for (const auto& [from, until] : {std::pair{3.0, 3.0}, {3.0, 3.0009}, {4.0, 3.0}, {7.0, 6.0}})
        EXPECT_EQ(refused("describe_project", {{"from", from}, {"until", until}}),
                  "Invalid value for “from/until”: from has to be before until");
}

TEST_F(ReadingToolsTest, SeesWhatOthersWrite) {
    const auto bundle = addProject("Tour");
    EXPECT_EQ(facts("describe_project")["style"]["padding"], 0.05);
    edit(bundle, [](EditPayload& edit) { edit.padding = 0.2; });
    EXPECT_EQ(facts("describe_project")["style"]["padding"], 0.2);
    EXPECT_EQ(facts("describe_project")["transcript"]["exists"], false);
    put(bundle / "transcript.json", R"({"engine":"x","createdAt":"2026-01-01T00:00:00Z","segments":[]})");
    EXPECT_EQ(facts("describe_project")["transcript"]["exists"], true);
    put(bundle / "camera.mov", "movie");
    put(bundle / "cursorShapes.json", "{}");
    const JSONValue project = facts("describe_project");
    EXPECT_EQ(project["has_camera"], true);
    EXPECT_EQ(project["camera"]["visible"], true);
    EXPECT_EQ(project["style"]["cursor_size"], 1.5);
}

TEST_F(ReadingToolsTest, ProjectsAreReadByAddress) {
    EXPECT_THAT(m_router.resources(), testing::SizeIs(1));
    addProject("Café — 1.5");
    const auto resources = m_router.resources();
    ASSERT_EQ(resources.size(), 2U);
    EXPECT_EQ(resources[1].uri, "morvelin://project/Caf%C3%A9%20%E2%80%94%201%2E5");
    EXPECT_EQ(resources[1].name, "Café — 1.5");
    const auto project = m_router.readResource(resources[1].uri);
    ASSERT_TRUE(project);
    EXPECT_EQ(project->at("clicks"), 1);
    EXPECT_EQ(project->at("versions").size(), 2U);
    EXPECT_EQ(m_router.readResource(resources[0].uri)->at("projects").size(), 1U);
    for (const char* uri : {"morvelin://project/no%20such", "morvelin://project/..%2F..", "morvelin://project/%zz",
                            "morvelin://project/", "morvelin://other", ""})
        EXPECT_EQ(m_router.readResource(uri).error(), "Unknown resource “" + std::string(uri) + "”.");
    put(m_folders.projects.path() / "Damaged.MORVELIN" / "capture.json", "{}");
    EXPECT_EQ(m_router.readResource("morvelin://project/Damaged").error(), "Bundle is missing recording.mov");
}

TEST_F(ReadingToolsTest, ReadsTheEventsOfAnExport) {
    EXPECT_EQ(refused("read_events"), "Nothing has been exported yet. Call export first.");
    put(m_folders.exports / "old.events.json", R"({"format":"old"})");
    put(m_folders.exports / "new.events.json", R"({"format":"new"})");
    std::filesystem::last_write_time(m_folders.exports / "old.events.json",
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    EXPECT_EQ(facts("read_events")["format"], "new");
    EXPECT_EQ(facts("read_events", {{"path", "~/Movies/Morvelin/Exports/old.mp4"}})["format"], "old");
    EXPECT_EQ(facts("read_events", {{"path", (m_folders.exports / "old.events.json").string()}})["format"], "old");
    EXPECT_THAT(refused("read_events", {{"path", "/nowhere.mp4"}}),
                StartsWith("No events sidecar next to “/nowhere.mp4”."));
    put(m_folders.exports / "bad.events.json", "{");
    EXPECT_THAT(refused("read_events", {{"path", (m_folders.exports / "bad.mp4").string()}}),
                HasSubstr("isn’t valid JSON"));
}

TEST_F(ReadingToolsTest, EveryToolOfTheCatalogueAnswers) {
    for (const MCPTool& tool : toolCatalogue()) {
        const MCPToolResult result = call(tool.name, JSONValue::object());
        EXPECT_THAT(result.text, testing::Not(HasSubstr("Unknown tool"))) << tool.name;
        EXPECT_FALSE(result.text.empty()) << tool.name;
    }
    EXPECT_EQ(refused("x"), "Unknown tool “x”.");
    EXPECT_EQ(refused("transcribe"), "“transcribe” is not part of this version of Morvelin yet.");
    EXPECT_EQ(refused("describe_project"), "There are no recordings yet. Call start_recording to make one.");
    EXPECT_EQ(refused("describe_project", {{"project", "/no"}}), "No .morvelin project at “/no”.");
    EXPECT_EQ(refused("start_recording"), "Morvelin is not ready to record yet. Try again in a moment.");
    EXPECT_EQ(facts("recording_status", JSONValue::array())["displays"], JSONValue::array());
}

} // namespace
} // namespace morvelin
