// Edits by agents on the files: what they change, what they refuse, and that a refused or failed one changes nothing.

#include <gmock/gmock.h>

#include "agent/RouterFixture.h"
#include "agent/ToolCatalogue.h"
#include "core/base/AdvisoryLock.h"
#include "media/PNG.h"

namespace morvelin {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class EditToolsTest : public RouterFixture {
protected:
    [[nodiscard]] JSONValue described() { return facts("describe_project"); }
    [[nodiscard]] EditPayload onDisk() { return open(m_bundle)->currentVersion().edit; }

    /// Sets the zoom track: the opening level, a zoom in over 2–3 s, and back out over 6–7 s.
    std::vector<std::string> threeZooms() {
        facts("set_zoom", {{"clear", true}});
        facts("set_zoom", {{"at", 2}, {"factor", 2}, {"transition", 1}, {"x", 0.7}, {"y", 0.4}});
        facts("set_zoom", {{"at", 6}, {"factor", 1}, {"transition", 1}});
        std::vector<std::string> ids;
        const JSONValue project = described();
        for (const JSONValue& zoom : project["zooms"]) ids.push_back(zoom["id"]);
        return ids;
    }

    const std::filesystem::path m_bundle = addProject("Tour");
};

TEST_F(EditToolsTest, CutsTrimsAndRetimes) {
    EXPECT_EQ(facts("cut", {{"from", "2"}, {"to", 4}}), (JSONValue{{"removed", 2.0}, {"duration", 8.0}}));
    EXPECT_EQ(facts("set_speed", {{"from", 0}, {"to", 2}, {"speed", 2}}),
              (JSONValue{{"speed", 2.0}, {"duration", 7.0}}));
    EXPECT_EQ(facts("trim", {{"start", 0.04}, {"end", 6.97}})["removed"], 0) << "a twentieth of a second is no trim";
    EXPECT_EQ(facts("trim", {{"start", 0.5}, {"end", 6}}), (JSONValue{{"removed", 1.5}, {"duration", 5.5}}));
    const EditPayload edit = onDisk();
    EXPECT_EQ(edit.duration, 5.5_s);
    ASSERT_EQ(edit.fragments.size(), 2U);
    EXPECT_EQ(edit.fragments[0].sourceStart, SourceTime(1));
    EXPECT_EQ(edit.fragments[0].speed, 2);
    EXPECT_EQ(facts("set_speed", {{"from", 0}, {"to", 5.5}, {"speed", 30}})["speed"], 30);
}

TEST_F(EditToolsTest, CuesStayOnWhatTheyPointAt) {
    const JSONValue mask = facts(
        "annotate", {{"type", "blur"}, {"at", 5}, {"rect", {{"x", 0}, {"y", 0}, {"width", 1}, {"height", 0.001}}}});
    EXPECT_EQ(mask["until"], 10) << "a redaction lasts to the end";
    EXPECT_EQ(mask["rect"]["height"], 0.02);
    const JSONValue tap = facts(
        "annotate", {{"type", "tap"}, {"at", 3}, {"x", 0.5}, {"y", 2}, {"label", "Send"}, {"target_kind", "button"}});
    EXPECT_EQ(tap["y"], 1);
    EXPECT_EQ(tap["label"], "Send");
    facts("cut", {{"from", 1}, {"to", 2}});
    const JSONValue annotations = described()["annotations"];
    ASSERT_EQ(annotations.size(), 2U);
    EXPECT_EQ(annotations[0]["at"], 2);
    EXPECT_EQ(annotations[1]["at"], 4);
    facts("cut", {{"from", 1.5}, {"to", 3.5}});
    EXPECT_EQ(described()["annotations"].size(), 1U) << "the hand lay wholly inside";
}

TEST_F(EditToolsTest, AnnotationsChangeByField) {
    const JSONValue focus = facts(
        "annotate",
        {{"type", "focus"}, {"at", 1}, {"rect", {{"x", 0.1}, {"y", 0.1}, {"width", 0.2}, {"height", 0.2}}}});
    EXPECT_EQ(focus["until"], 4);
    const JSONValue id = focus["id"];
    EXPECT_EQ(facts("update_annotation", {{"id", id}, {"at", 2}})["until"], 5) << "it slides";
    EXPECT_EQ(facts("update_annotation", {{"id", id}, {"until", 3}})["at"], 2);
    EXPECT_EQ(facts("update_annotation", {{"id", id}, {"label", "Export"}})["label"], "Export");
    EXPECT_FALSE(facts("update_annotation", {{"id", id}, {"label", ""}}).contains("label"));
    EXPECT_EQ(refused("update_annotation", {{"id", id}, {"blur_radius", 10}, {"x", 0.5}}),
              "A focus has no blur_radius, x. Call describe_project to see which fields each annotation has.");
    const JSONValue mask = facts(
        "annotate", {{"type", "mask"}, {"at", 0}, {"until", 1e308}, {"rect", focus["rect"]}, {"blur_radius", 500}});
    EXPECT_EQ(mask["until"], 10) << "nothing is shown after the end";
    EXPECT_EQ(mask["blur_radius"], 64);
    EXPECT_EQ(refused("update_annotation", {{"id", mask["id"]}, {"blur_radius", 65}}),
              "blur_radius 65.00 is out of range (6.00–64.00).");
    EXPECT_EQ(facts("remove_annotation", {{"all", true}, {"type", "tap_tap"}})["removed"], 0);
    EXPECT_EQ(facts("remove_annotation", {{"id", id}})["removed"], 1);
    EXPECT_EQ(facts("remove_annotation", {{"all", "true"}})["removed"], 1);
}

TEST_F(EditToolsTest, ZoomsAreSetMovedRolledAndRebuilt) {
    const auto ids = threeZooms();
    ASSERT_EQ(ids.size(), 3U);
    EXPECT_EQ(
        refused("set_zoom", {{"at", 2.5}, {"factor", 3}}),
        "A ramp over 2.50s–3.10s would overlap another. The zoom track is free there from 3.00s to 6.00s: fit the "
        "ramp inside, or move or remove its neighbour (describe_project lists them).");
    const JSONValue moved = facts("update_zoom", {{"id", ids[1]}, {"start", 2.5}, {"x", 0.2}, {"y", 0.6}});
    EXPECT_EQ(moved["end"], 3.5);
    EXPECT_EQ(moved["x"], 0.2);
    const JSONValue roll = facts("roll_zoom_seam", {{"id", ids[2]}, {"to", 5}});
    EXPECT_EQ(roll["seam"], 5);
    EXPECT_EQ(roll["previous"]["id"], ids[1]);
    EXPECT_FALSE(roll.contains("absorbed"));
    EXPECT_EQ(facts("rebuild_zoom_position_keys", {{"id", ids[1]}})["position_keys"].size(), 2U);
    EXPECT_EQ(
        refused("rebuild_zoom_position_keys", {{"id", ids[2]}}),
        "This zoom goes to 1×: a zoom that does not zoom in frames the whole capture and owns no position keys to "
        "rebuild.");
    EXPECT_EQ(facts("remove_zoom", {{"id", ids[1]}}), (JSONValue{{"removed", ids[1]}, {"zooms", 2}}));
    EXPECT_THAT(refused("remove_zoom", {{"id", ids[0]}}), StartsWith("The first zoom sets the level"));
    EXPECT_THAT(refused("roll_zoom_seam", {{"id", ids[0]}, {"to", 3}}), StartsWith("The first zoom sets the level"));
    EXPECT_THAT(refused("update_zoom", {{"id", ids[0]}, {"start", 1}}), StartsWith("The opening zoom key sits at 0s"));
}

TEST_F(EditToolsTest, PositionKeysKeepTheirDistance) {
    threeZooms();
    facts("set_style", {{"padding", 0}});
    const JSONValue key = facts("add_position_key", {{"at", 4.5}, {"x", 0.1}, {"y", 0.9}});
    EXPECT_EQ(key["framed_x"], 0.25) << "at 2 × the frame stops at the capture's edge";
    EXPECT_EQ(refused("add_position_key", {{"at", 4.52}, {"x", 0.1}, {"y", 0.9}}),
              "A position key already sits within 0.05s of 4.52s. Move that one instead.");
    EXPECT_EQ(facts("update_position_key", {{"id", key["id"]}, {"time", 5}})["time"], 5);
    const JSONValue first = described()["positions"][0]["id"];
    EXPECT_THAT(refused("update_position_key", {{"id", first}, {"time", 1}}), StartsWith("The first position key"));
    EXPECT_THAT(refused("remove_position_key", {{"id", first}}), StartsWith("The first position key"));
    EXPECT_EQ(facts("remove_position_key", {{"id", key["id"]}})["removed"], key["id"]);
}

TEST_F(EditToolsTest, ARebuildAsksBeforeItThrowsHandWorkAway) {
    EXPECT_EQ(facts("set_auto_timeline", {{"zoom_out_after", 2}})["rebuilt"], true) << "nothing was edited yet";
    facts("add_position_key", {{"at", 8}, {"x", 0.1}, {"y", 0.9}});
    const auto before = bytesBelow(m_bundle);
    EXPECT_THAT(refused("set_auto_timeline", {{"curve", "linear"}}), HasSubstr("Pass force: true"));
    EXPECT_EQ(refused("set_auto_timeline", {{"zoom_transition", 5}}),
              "zoom_transition 5.00 is out of range (0.20–4.00).");
    EXPECT_EQ(bytesBelow(m_bundle), before);
    EXPECT_EQ(facts("set_auto_timeline", {{"curve", "linear"}, {"rebuild", false}})["rebuilt"], false);
    EXPECT_EQ(facts("set_auto_timeline", {{"force", true}})["zoom_out_after"], 2);
    EXPECT_EQ(described()["auto_timeline"]["curve"], "linear");
}

TEST_F(EditToolsTest, TheVideoIsDressed) {
    const JSONValue style = facts("set_style", {{"background", "COBALT"},
                                                {"padding", 0.1},
                                                {"cursor_size", 2},
                                                {"tap_tap_style", "glove"},
                                                {"captions", "false"}});
    EXPECT_EQ(style["background"], (JSONValue{{"type", "color"}, {"color", "#2F5BEA"}}))
        << "the plain colour, not the gradient";
    EXPECT_EQ(style["captions"], false);
    EXPECT_TRUE(onDisk().cursor.has_value());
    facts("set_style", {{"cursor_size", 1.5}});
    EXPECT_FALSE(onDisk().cursor.has_value()) << "the defaults are not stored";
    EXPECT_EQ(facts("set_style", {{"background", "palette-cobalt"}})["background"]["name"], "palette-cobalt");
    EXPECT_EQ(facts("set_style", {{"background", "dune"}})["background"]["name"], "palette-dune");
    EXPECT_EQ(facts("set_style", {{"background", "wallpaper-dusk"}})["background"]["type"], "wallpaper");
    EXPECT_EQ(facts("set_style", {{"background", "#a0B1c2"}})["background"]["color"], "#A0B1C2");
    EXPECT_EQ(facts("set_style", {{"background", "none"}})["padding"], 0);
    const JSONValue names = described()["backgrounds"];
    for (const JSONValue& name : names) EXPECT_FALSE(call("set_style", {{"background", name}}).isError) << name;
    for (const char* name : {"#12345", "#12345g", "", "palette-", "nothing"})
        EXPECT_THAT(refused("set_style", {{"background", name}}), StartsWith("Unknown background “"));
    EXPECT_THAT(refused("set_style", {{"cursor_style", "big"}}), HasSubstr("expected one of system, ink, paper"));
    EXPECT_EQ(refused("set_style", {{"shadow", 1.2}}), "shadow 1.20 is out of range (0.00–1.00).");
    EXPECT_EQ(refused("set_camera", {{"size", 0.2}}), "This recording has no camera track.");
}

TEST_F(EditToolsTest, APictureIsTakenIntoTheProject) {
    const auto picture = m_home.path() / "my picture.png";
    const auto bytes = encodePNG({{64, 32}, std::vector<std::uint8_t>(std::size_t{4} * 64 * 32, 200)}).value();
    put(picture, {bytes.begin(), bytes.end()});
    const JSONValue style = facts("set_style", {{"background_image", "~/my picture.png"}});
    const std::filesystem::path copy = style["background"]["path"].get<std::string>();
    EXPECT_EQ(copy.parent_path(), m_bundle);
    EXPECT_EQ(readFile(copy).value(), readFile(picture).value());
    put(m_home.path() / "photo.jpg", {bytes.begin(), bytes.end()});
    EXPECT_THAT(facts("set_style", {{"background_image", "~/photo.jpg"}})["background"]["path"], HasSubstr(".png"))
        << "what it holds counts, not its name";
    put(m_home.path() / "text.png", "This is no picture, whatever its name says.");
    put(m_home.path() / "half.png", readFile(picture)->substr(0, 40));
    const auto before = bytesBelow(m_bundle);
    for (const char* path : {"~/text.png", "~/half.png", "/nowhere.png", "~"})
        EXPECT_EQ(refused("set_style", {{"background_image", path}, {"padding", 0.3}}),
                  "“" + std::string(path) + "” is not an image Morvelin can read (PNG, JPEG, HEIC…).");
    EXPECT_EQ(bytesBelow(m_bundle), before);
}

TEST_F(EditToolsTest, TheBubbleStaysParkedAndInside) {
    put(m_bundle / "camera.mov", "movie");
    EXPECT_EQ(facts("set_camera", {{"anchor", "topLeft"}, {"size", 0.2}})["x"], 0.03);
    const JSONValue bigger = facts("set_camera", {{"size", 0.4}});
    EXPECT_EQ(bigger["x"], 0.03);
    EXPECT_EQ(bigger["y"], 0.053) << "the margin is as wide as it is high";
    EXPECT_EQ(facts("set_camera", {{"x", 0.9}, {"y", 0.9}})["x"], 0.6);
    EXPECT_EQ(facts("set_camera", {{"mirrored", true}, {"visible", false}})["visible"], false);
    EXPECT_THAT(refused("set_camera", {{"anchor", "middle"}}), HasSubstr("expected one of topLeft, top, topRight"));
    const NormalizedRect tall{0.1, 0.2, 0.3, 0.6};
    edit(m_bundle, [&](EditPayload& edit) { edit.camera->rect = tall; });
    facts("set_camera", {{"mirrored", false}});
    EXPECT_EQ(onDisk().camera->rect, tall) << "as the preview drew it";
    facts("set_camera", {{"x", 0.5}});
    EXPECT_EQ(onDisk().camera->rect, (NormalizedRect{0.5, 0.2, 0.3, 0.6}));
    EXPECT_EQ(refused("set_camera", {{"size", 0.6}}), "size 0.60 is out of range (0.08–0.50).");
}

TEST_F(EditToolsTest, WhatIsRefusedChangesNoByte) {
    const JSONValue nobody = "00000000-0000-0000-0000-000000000000";
    const JSONValue rect{{"x", 0}, {"y", 0}, {"width", 1}};
    struct Case {
        const char* tool;
        JSONValue arguments;
        const char* words;
    };
    const std::vector<Case> cases{
        {"cut", {{"from", 1}}, "Invalid value for “from/to”: expected a span in seconds"},
        {"cut", {{"from", "soon"}, {"to", 2}}, "Invalid value for “from/to”: expected a span in seconds"},
        {"cut", {{"from", 0}, {"to", 10}}, "That would remove the whole recording. Cut a shorter span."},
        {"cut", {{"from", 0.05}, {"to", 9.96}}, "That would remove the whole recording. Cut a shorter span."},
        {"cut", {{"from", 1}, {"to", 1e300}}, "s long."},
        {"cut", {{"from", -1}, {"to", 2}}, "-1.00s is outside this recording, which is 10.00s long."},
        {"cut", {{"from", 3}, {"to", 3.01}}, "That span is too short to be a separate piece of the timeline."},
        {"set_speed", {{"from", 1}, {"to", 2}}, "Invalid value for “from/to/speed”: expected a span and a rate"},
        {"set_speed", {{"from", 1}, {"to", 2}, {"speed", 41}}, "Speed 41.00× is out of range (0.2×–40×)."},
        {"set_speed", {{"from", 1}, {"to", 2}, {"speed", 0.1}}, "Speed 0.10× is out of range (0.2×–40×)."},
        {"set_zoom", JSONValue::object(), "expected a time and a zoom level, or clear: true"},
        {"set_zoom", {{"at", 1}, {"factor", 11}}, "Zoom 11.00× is out of range (1×–10×)."},
        {"set_zoom",
         {{"at", 1}, {"factor", 2}, {"x", 0.5}},
         "Invalid value for “x/y”: a focal point needs both x and y"},
        {"set_zoom",
         {{"at", 1}, {"factor", 2}, {"curve", "bouncy"}},
         "Invalid value for “curve”: expected smooth or linear"},
        {"update_zoom", {{"id", "7"}}, "Invalid value for “id”: expected an id from describe_project"},
        {"update_zoom", {{"id", nobody}}, "No zoom with id 00000000-"},
        {"roll_zoom_seam", {{"id", nobody}}, "Invalid value for “to”: expected a time in seconds"},
        {"add_position_key", {{"at", 1}}, "Invalid value for “at/x/y”: expected a time and a point"},
        {"update_position_key", {{"id", nobody}, {"x", 0.1}}, "No position key with id"},
        {"annotate", JSONValue::object(), "Invalid value for “type”: expected focus, taptap or mask"},
        {"annotate", {{"type", "arrow"}}, "expected focus, taptap or mask, got “arrow”"},
        {"annotate", {{"type", "mask"}}, "Invalid value for “at”: expected a time in seconds"},
        {"annotate", {{"type", "mask"}, {"at", 11}}, "11.00s is outside this recording, which is 10.00s long."},
        {"annotate",
         {{"type", "mask"}, {"at", 1}, {"rect", rect}},
         "a mask needs a rect with x, y, width and height in 0–1 coordinates"},
        {"annotate",
         {{"type", "taptap"}, {"at", 1}, {"x", 1}},
         "Invalid value for “x/y”: a taptap needs a point to tap"},
        {"annotate",
         {{"type", "tap"}, {"at", 1}, {"x", 0}, {"y", 0}, {"target_kind", "unknown"}},
         "expected text, button, icon, image or region"},
        {"remove_annotation", JSONValue::object(), "Invalid value for “id”: expected an annotation id, or all: true"},
        {"remove_annotation", {{"id", nobody}}, "call describe_project for the ones on this project"},
        {"remove_annotation", {{"all", true}, {"type", "arrow"}}, "expected focus, taptap or mask"},
        {"update_annotation", {{"id", nobody}}, "No annotation with id"}};
    const auto before = bytesBelow(m_bundle);
    for (const Case& each : cases)
        EXPECT_THAT(refused(each.tool, each.arguments), HasSubstr(each.words)) << each.tool << each.arguments;
    EXPECT_EQ(bytesBelow(m_bundle), before);

    const FullDisk disk(64);
    EXPECT_THAT(refused("cut", {{"from", 1}, {"to", 2}}), HasSubstr("could not be saved"));
    EXPECT_EQ(bytesBelow(m_bundle), before);
}

/// Stands for the editor's window.
class FakeEditor final : public MCPLiveEditor {
public:
    EditPayload shown;
    int undoSteps = 0;

    [[nodiscard]] EditPayload edit() const override { return shown; }
    void apply(EditPayload edit) override {
        shown = std::move(edit);
        ++undoSteps;
    }
    void transcriptChanged() override {}
};

/// A call of each editing tool that works on `EditToolsTest`'s three zooms; the rest of the arguments is optional.
std::vector<std::pair<std::string, JSONValue>> workingCalls(const JSONValue& project) {
    const JSONValue rect{{"x", 0.1}, {"y", 0.1}, {"width", 0.5}, {"height", 0.5}};
    const JSONValue zoom = project["zooms"][1]["id"];
    const JSONValue key = project["positions"][1]["id"];
    const JSONValue& cues = project["annotations"];
    return {{"cut", {{"from", 1}, {"to", 2}}},
            {"trim", {{"start", 1}, {"end", 9}}},
            {"set_speed", {{"from", 1}, {"to", 2}, {"speed", 2}}},
            {"set_zoom", {{"at", 8}, {"factor", 2}}},
            {"update_zoom", {{"id", zoom}}},
            {"roll_zoom_seam", {{"id", zoom}, {"to", 1}}},
            {"rebuild_zoom_position_keys", {{"id", zoom}}},
            {"remove_zoom", {{"id", zoom}}},
            {"add_position_key", {{"at", 9}, {"x", 0.5}, {"y", 0.5}}},
            {"update_position_key", {{"id", key}, {"time", 4}}},
            {"remove_position_key", {{"id", key}}},
            {"set_auto_timeline", {{"force", true}}},
            {"annotate", {{"type", "focus"}, {"at", 1}, {"rect", rect}}},
            {"annotate", {{"type", "tap"}, {"at", 1}, {"x", 0.5}, {"y", 0.5}}},
            {"update_annotation", {{"id", cues[0]["id"]}}},
            {"update_annotation", {{"id", cues[1]["id"]}}},
            {"remove_annotation", {{"id", cues[0]["id"]}}},
            {"narrate", {{"text", "Hello."}, {"at", 1}}},
            {"edit_transcript", {{"text", "Hello there."}}},
            {"export_captions", JSONValue::object()},
            {"use_narration_take", {{"take", "1"}}},
            {"clear_narration", JSONValue::object()},
            {"set_style", JSONValue::object()},
            {"set_camera", JSONValue::object()}};
}

Task<void> ask(MorvelinCommandRouter& router, std::string tool, JSONValue arguments,
               std::optional<MCPToolResult>& answer) {
    answer = co_await router.call(std::move(tool), std::move(arguments), "test");
}

double largestNumber(const JSONValue& value) {
    if (value.is_number()) return std::abs(value.get<double>());
    double largest = 0;
    if (value.is_structured())
        for (const JSONValue& each : value) largest = std::max(largest, largestNumber(each));
    return largest;
}

/// Whatever stands in place of an argument, a call works and leaves a sound edit, or says why not and changes nothing.
TEST_F(EditToolsTest, NoArgumentHarmsTheProject) {
    threeZooms();
    put(m_bundle / "camera.mov", "movie");
    facts("annotate", {{"type", "mask"}, {"at", 1}, {"rect", {{"x", 0}, {"y", 0}, {"width", 1}, {"height", 1}}}});
    facts("annotate", {{"type", "tap"}, {"at", 2}, {"x", 0.5}, {"y", 0.5}});
    facts("narrate", {{"text", "So far."}, {"at", 3}});
    const JSONValue strange = m_ids.next().text();
    const std::vector<JSONValue> values{nullptr,
                                        "",
                                        "nan",
                                        "1e999",
                                        1e308,
                                        -1e308,
                                        5e-324,
                                        strange,
                                        "7F-zz",
                                        true,
                                        JSONValue::array(),
                                        JSONValue{{"x", "inf"}}};
    const auto calls = workingCalls(described());
    const auto files = bytesBelow(m_bundle);
    const EditPayload before = onDisk();
    FakeEditor editor;
    MorvelinCommandRouter router{
        {m_folders, services(), m_loop, m_trash, m_images, m_movies, [&](const auto&) { return &editor; }}};
    for (const auto& [tool, arguments] : calls)
        for (const auto& [name, schema] : findTool(tool)->inputSchema.at("properties").items())
            for (const JSONValue& value : values) {
                if (name == "project" || name == "path") continue;
                editor.shown = before;
                JSONValue changed = arguments;
                changed[name] = value;
                std::optional<MCPToolResult> answer;
                m_loop.spawn(ask(router, tool, changed, answer));
                m_loop.advance(1_s);
                ASSERT_TRUE(answer) << tool << changed;
                if (answer->isError) {
                    EXPECT_EQ(editor.shown, before) << tool << changed;
                    EXPECT_EQ(bytesBelow(m_bundle), files) << tool << changed;
                    continue;
                }
                EXPECT_LT(largestNumber(*answer->structured), 1000) << tool << changed;
                EXPECT_LT(largestNumber(toJSON(editor.shown)), 1000) << tool << changed;
                put(m_bundle / "transcript.json", files.at("transcript.json"));
            }
}

TEST_F(EditToolsTest, IdsOfAnotherProjectNameNothing) {
    threeZooms();
    const auto other = addProject("Other");
    const JSONValue zoom = facts("set_zoom", {{"project", "Other"}, {"at", 1}, {"factor", 2}})["id"];
    const JSONValue key = facts("add_position_key", {{"project", "Other"}, {"at", 9}, {"x", 0}, {"y", 0}})["id"];
    const JSONValue hand = facts("annotate",
                                 {{"project", "Other"}, {"type", "tap"}, {"at", 1}, {"x", 0}, {"y", 0}})["id"];
    const auto before = bytesBelow(m_bundle);
    const auto otherBefore = bytesBelow(other);
    for (const char* tool : {"update_zoom", "remove_zoom", "rebuild_zoom_position_keys", "roll_zoom_seam"})
        EXPECT_THAT(refused(tool, {{"project", "Tour"}, {"id", zoom}, {"to", 1}}), StartsWith("No zoom with id"))
            << tool;
    for (const char* tool : {"update_position_key", "remove_position_key"})
        EXPECT_THAT(refused(tool, {{"project", "Tour"}, {"id", key}}), StartsWith("No position key with id")) << tool;
    EXPECT_THAT(refused("update_annotation", {{"project", "Tour"}, {"id", hand}}), StartsWith("No annotation with id"));
    EXPECT_THAT(refused("remove_annotation", {{"project", "Tour"}, {"id", hand}}), HasSubstr("no annotation with id"));
    EXPECT_EQ(bytesBelow(m_bundle), before);
    EXPECT_EQ(bytesBelow(other), otherBefore);
}

TEST_F(EditToolsTest, AProjectWithoutATimelineIsLeftAlone) {
    edit(m_bundle, [](EditPayload& edit) {
        edit.duration = 0_s;
        edit.fragments.clear();
        edit.zoomKeyframes.clear();
        edit.positionKeyframes.clear();
    });
    EXPECT_EQ(refused("cut", {{"from", 0}, {"to", 1}}), "This project has no timeline yet.");
    EXPECT_EQ(refused("trim"), "This project has no timeline yet.");
    EXPECT_EQ(refused("set_speed", {{"from", 0}, {"to", 1}, {"speed", 2}}), "This project has no timeline yet.");
    EXPECT_EQ(refused("annotate", {{"type", "mask"}, {"at", 0}}), "This project has no timeline yet.");
    EXPECT_THAT(refused("set_zoom", {{"at", 1}, {"factor", 2}}), HasSubstr("is outside this recording"));
    EXPECT_THAT(refused("add_position_key", {{"at", 1}, {"x", 0}, {"y", 0}}), HasSubstr("is outside this recording"));
    EXPECT_THAT(refused("narrate", {{"text", "Hm."}, {"at", 0}}), HasSubstr("is outside this recording"));
    EXPECT_EQ(facts("set_zoom", {{"clear", true}})["cleared"], 0);
    EXPECT_EQ(facts("set_auto_timeline", {{"force", true}})["rebuilt"], true);
}

TEST_F(EditToolsTest, TwoProgramsEditsBothCount) {
    MorvelinCommandRouter other{{m_folders, services(), m_loop, m_trash, m_images, m_movies, {}}};
    const auto run = [](MorvelinCommandRouter& router, JSONValue arguments) -> Task<void> {
        EXPECT_FALSE((co_await router.call("cut", std::move(arguments), "test")).isError);
    };
    {
        const auto busy = AdvisoryLock::attempt(m_bundle, AdvisoryLock::Target::Folder);
        ASSERT_TRUE(busy && *busy);
        m_loop.spawn(run(m_router, {{"from", 1}, {"to", 2}}));
        m_loop.spawn(run(other, {{"from", 4}, {"to", 6}}));
        m_loop.advance(0.5_s);
        EXPECT_EQ(onDisk().duration, 10_s) << "a third one is at work";
    }
    m_loop.advance(1_s);
    EXPECT_EQ(onDisk().duration, 7_s);
}

TEST_F(EditToolsTest, ARenamedProjectStillShowsItsPicture) {
    const auto bytes = encodePNG({{4, 4}, std::vector<std::uint8_t>(std::size_t{4} * 16, 200)}).value();
    put(m_home.path() / "picture.png", {bytes.begin(), bytes.end()});
    facts("set_style", {{"background_image", "~/picture.png"}});
    facts("rename_project", {{"name", "Grand tour"}});
    const std::filesystem::path picture = described()["style"]["background"]["path"].get<std::string>();
    EXPECT_EQ(picture.parent_path(), m_folders.projects.path() / "Grand tour.morvelin");
    EXPECT_TRUE(std::filesystem::exists(picture));
}

TEST_F(EditToolsTest, AnOpenEditorIsEditedInsteadOfTheFiles) {
    FakeEditor editor;
    editor.shown = onDisk();
    editor.shown.padding = 0.3;
    const auto before = bytesBelow(m_bundle);
    const auto openEditors = [&](const std::filesystem::path& bundle) {
        return bundle == m_bundle ? &editor : nullptr;
    };
    MorvelinCommandRouter router{{m_folders, services(), m_loop, m_trash, m_images, m_movies, openEditors}};
    const auto run = [&](std::string tool, JSONValue arguments) -> Task<void> {
        (void)co_await router.call(std::move(tool), std::move(arguments), "test");
    };
    m_loop.spawn(run("cut", {{"from", 1}, {"to", 2}}));
    m_loop.spawn(run("set_style", {{"shadow", 0}}));
    m_loop.spawn(run("cut", {{"from", 1}}));
    m_loop.advance(1_s);
    EXPECT_EQ(editor.undoSteps, 2) << "a refused edit is none";
    EXPECT_EQ(editor.shown.duration, 9_s);
    EXPECT_EQ(editor.shown.padding, 0.3);
    EXPECT_EQ(bytesBelow(m_bundle), before);
}

} // namespace
} // namespace morvelin
