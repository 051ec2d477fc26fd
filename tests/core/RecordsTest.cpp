// The records as project files hold them: keys, tolerance, and what never reaches a file.

#include <set>

#include <gtest/gtest.h>

#include "core/CursorEvent.h"
#include "core/ProjectVersion.h"

namespace morvelin {
namespace {

JSONValue json(std::string_view text) { return parseJSON(text).value(); }

/// A version in which every field, optional ones included, holds something.
ProjectVersion fullVersion() {
    SeededIdSource ids(1);
    const EffectTarget target{EffectTarget::Kind::Button, "Save"};
    const CodableColor color{0.1, 0.2, 0.3, 0.4};
    EditPayload edit;
    edit.duration = 12.5_s;
    edit.fragments = {VideoFragment::whole(25_s, ids)};
    edit.fragments[0].audio = FragmentAudio{0.5_s, SourceTime(1), SourceTime(2), true};
    edit.zoomKeyframes = {ZoomKeyframe::baseline(ids)};
    edit.positionKeyframes = {PositionKeyframe::baseline(ids)};
    edit.positionKeyframes[0].zoomKeyframeID = edit.zoomKeyframes[0].id;
    edit.maskKeyframes = {MaskKeyframe{ids.next(), 1_s, 2_s, {0.1, 0.2, 0.3, 0.4}, 20}};
    edit.focusKeyframes = {FocusKeyframe{ids.next(), 1_s, 2_s, {0.1, 0.2, 0.3, 0.4}, 0.5_s, target, color}};
    edit.tapTapKeyframes = {TapTapKeyframe{ids.next(), 1_s, 2_s, 0.25, 0.75, 0.12, target}};
    edit.timelineTrackVisibility = {{"zoom", false}};
    edit.editing = EditingSettings{};
    edit.background.imageURL = "file:///a%20b.png";
    edit.clickAnimationColor = edit.annotationColor = color;
    edit.tapTapStyle = TapTapStyle::Glove;
    edit.tapTapScale = 1.25;
    edit.cursor = CursorSettings{false, CursorStyle::FrostedAmber, 2, 0.25};
    edit.captions = CaptionTrack{
        1, "tracks", "en", Date::fromUnixSeconds(3), {{ids.next(), 1_s, 2_s, "One two", {{1_s, 1.5_s, "One", 0.5}}}}};
    edit.camera = CameraSettings{{0, 0, 0.25, 0.25}, 0.5, true, -0.25_s};
    edit.audioTracks = {AudioTrackRef::recording(), {ids.next(), ids.next(), false, {{}}}};
    edit.narrationTakeID = ids.next();
    edit.narrationTakeIDs = {ids.next()};
    edit.narrationArrangements = {
        NarrationArrangement{ids.next(), {NarrationPiece{ids.next(), 1_s, 2_s, EditTime(3)}}}};
    edit.captionsSourceID = ids.next();
    return {ids.next(), "Version 1", false, Date::fromUnixSeconds(1), Date::fromUnixSeconds(2), edit};
}

TEST(ProjectVersions, ComeBackFromTheirFileAsTheyWere) {
    const ProjectVersion version = fullVersion();
    const std::string text = writeJSON(toJSON(version), JSONStyle::Compact);
    EXPECT_EQ(decode<ProjectVersion>(text).value(), version);

    ProjectVersion bare = version;
    bare.edit = EditPayload{};
    EXPECT_EQ(decode<ProjectVersion>(writeJSON(toJSON(bare), JSONStyle::Compact)).value(), bare);
    EXPECT_EQ(writeJSON(toJSON(bare), JSONStyle::Compact).find("null"), std::string::npos);
}

TEST(ProjectVersions, OnlyTheseKeysMayBeMissing) {
    const std::set<std::string> optional{"editing",          "clickAnimationColor",
                                         "annotationColor",  "tapTapStyle",
                                         "tapTapScale",      "cursor",
                                         "captions",         "camera",
                                         "audioTracks",      "narrationTakeID",
                                         "narrationTakeIDs", "narrationArrangements",
                                         "captionsSourceID"};
    const JSONValue full = toJSON(fullVersion().edit);
    EXPECT_EQ(full.size(), 29U);
    for (const auto& [key, _] : full.items()) {
        JSONValue without = full;
        without.erase(key);
        EXPECT_EQ(fromJSON<EditPayload>(without).has_value(), optional.contains(key)) << key;
        without[key] = nullptr;
        EXPECT_EQ(fromJSON<EditPayload>(without).has_value(), optional.contains(key)) << key << " as null";
    }
    const JSONValue version = toJSON(fullVersion());
    for (const auto& [key, _] : version.items()) {
        JSONValue without = version;
        without.erase(key);
        EXPECT_FALSE(fromJSON<ProjectVersion>(without)) << key;
    }
}

TEST(Captions, OfOtherProgramsOpenWhereOnlyTheirLinesAreBare) {
    const auto track = [](const std::string& cues) {
        const std::string head = R"({"version":2,"engine":"e","createdAt":"2026-01-01T00:00:00Z","mood":"glad",)";
        return fromJSON<CaptionTrack>(json(head + R"("cues":[)" + cues + "]}"));
    };
    const std::string words = R"("words":[{"t":1,"endT":1.5,"text":"a","confidence":1},
                                    {"t":1.5,"endT":2,"text":"b","confidence":1}])";
    const auto bare = track(R"({"t":1,"endT":2})").value().cues.at(0);
    EXPECT_EQ(bare, (CaptionCue{{}, 1_s, 2_s, "", {}})) << "whoever opens the file gives it an id";
    EXPECT_EQ(track(R"({"t":1,"endT":2,)" + words + "}").value().cues.at(0).text, "a b");
    EXPECT_EQ(track(R"({"t":1,"endT":2,"text":"",)" + words + "}").value().cues.at(0).text, "")
        << "an empty line is a line without text";
    EXPECT_FALSE(track(R"({"t":1})"));
    EXPECT_FALSE(track(R"({"t":1,"endT":2,"id":"no id"})"));
    for (const char* key : {"version", "engine", "createdAt", "cues"}) {
        JSONValue without = toJSON(CaptionTrack{});
        EXPECT_EQ(without.size(), 4u) << "an absent language has no key";
        without.erase(key);
        EXPECT_FALSE(fromJSON<CaptionTrack>(without)) << key;
    }
}

TEST(PositionKeyframes, OfOldFilesTakeTheirCentreAsTarget) {
    const auto key = fromJSON<PositionKeyframe>(json(R"({"time":2,"centerX":0.25,"centerY":0.75})")).value();
    EXPECT_EQ(key.targetX, 0.25);
    EXPECT_EQ(key.targetY, 0.75);
    EXPECT_EQ(key.id, UUID{}) << "whoever opens the file gives it an id";
    EXPECT_FALSE(fromJSON<PositionKeyframe>(json(R"({"time":2,"centerX":0.25})")));
}

TEST(PositionKeyframes, NeverTellAFileThatTheyAreEphemeral) {
    SeededIdSource ids(1);
    PositionKeyframe key = PositionKeyframe::baseline(ids);
    key.isEphemeral = true;
    JSONValue written = toJSON(key);
    EXPECT_FALSE(written.contains("isEphemeral"));
    written["isEphemeral"] = true;
    EXPECT_FALSE(fromJSON<PositionKeyframe>(written).value().isEphemeral);
}

TEST(PointerSettings, AreTheOneRecordThatToleratesAnUnknownName) {
    const CursorSettings usual;
    EXPECT_EQ(usual, (CursorSettings{true, CursorStyle::System, 1.5, 0.5}));
    const CursorSettings large{true, CursorStyle::System, 3, 0.5};
    const std::pair<const char*, CursorSettings> cases[] = {
        {"{}", usual},
        {R"({"style":"neon","size":3})", large},
        {R"({"style":5,"size":3})", large},
        {R"({"style":null,"isVisible":false})", CursorSettings{false, CursorStyle::System, 1.5, 0.5}},
        {R"({"style":"monoSprite"})", CursorSettings{true, CursorStyle::MonoSprite, 1.5, 0.5}},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(fromJSON<CursorSettings>(json(text)).value(), expected) << text;
    EXPECT_FALSE(fromJSON<CursorSettings>(json(R"({"size":"3"})")));

    for (const auto& [style, raw] : rawValues(std::type_identity<CursorStyle>{}))
        EXPECT_EQ(fromJSON<CursorSettings>(toJSON(CursorSettings{true, style, 1, 1})).value().style, style) << raw;
}

TEST(EffectTargets, RefuseAKindThatIsNotListed) {
    EXPECT_EQ(fromJSON<EffectTarget>(json(R"({"kind":"unknown"})")).value().kind, EffectTarget::Kind::Unknown);
    JSONValue focus = toJSON(fullVersion().edit.focusKeyframes[0]);
    focus["target"]["kind"] = "window";
    EXPECT_EQ(fromJSON<FocusKeyframe>(focus).error().description(), "At “target.kind”: unknown value “window”.");
}

TEST(CursorEvents, HoldAButtonOnlyWhereThereIsOne) {
    CursorEvent move{SourceTime(1.5), 0.25, 0.75, CursorEventType::Move, {}, {}};
    EXPECT_EQ(toJSON(move), json(R"({"event":"move","timestamp":1.5,"x":0.25,"y":0.75})"));
    CursorEvent press{SourceTime(1.5), 0.25, 0.75, CursorEventType::MouseDown, MouseButton::Right, 2};
    EXPECT_EQ(toJSON(press),
              json(R"({"event":"mouseDown","timestamp":1.5,"x":0.25,"y":0.75,"button":"right","clickCount":2})"));
    EXPECT_EQ(fromJSON<CursorEvent>(toJSON(press)).value(), press);
}

TEST(ShapeTracks, LeaveOutTheShapeWhereNoneIsKnown) {
    const CursorShapeTrack track{
        1, 1920, 1080, {{0, CursorShapeTrack::Kind::Arrow, 24, 24, 1, 1}}, {{SourceTime(0), 0}, {SourceTime(1), {}}}};
    const JSONValue written = toJSON(track);
    EXPECT_EQ(written["changes"], json(R"([{"t":0.0,"shape":0},{"t":1.0}])"));
    EXPECT_EQ(written["shapes"][0]["kind"], "arrow");
    EXPECT_EQ(fromJSON<CursorShapeTrack>(written).value(), track);
}

} // namespace
} // namespace morvelin
