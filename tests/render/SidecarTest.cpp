#include "core/base/Rounding.h"
#include "render/EventsSidecar.h"
#include "render/SidecarFile.h"
#include "render/TranscriptSidecar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"
#include "core/base/Date.h"
#include "storage/TranscriptFile.h"

namespace morvelin {
namespace {

CursorEvent press(double t, double x, double y, MouseButton button = MouseButton::Left,
                  std::optional<std::int64_t> clickCount = {}) {
    return {SourceTime(t), x, y, CursorEventType::MouseDown, button, clickCount};
}

VideoFragment fragment(double start, double end, double speed, std::int64_t order) {
    return {UUID{}, SourceTime(start), SourceTime(end), speed, order, {}};
}

ZoomKeyframe zoom(double t, double factor) {
    return {UUID{}, EditTime(t), 0.6_s, factor, ZoomTransitionType::Smooth, false};
}

EventsSidecarSubject subjectOf(const EditPayload& edit, std::span<const CursorEvent> events) {
    return {edit, events, false, "Demo.mp4", 12.34567_s, {1920, 1080}, 60, "0.1.0"};
}

JSONValue eventsOf(const EditPayload& edit, std::span<const CursorEvent> events = {}) {
    return parseJSON(encode(makeEventsSidecar(subjectOf(edit, events)))).value()["events"];
}

JSONValue parsed(const char* text) { return parseJSON(text).value(); }

TEST(EventsSidecar, RoundsToThreeDecimalsHalvesAwayFromZero) {
    struct Case {
        double value, rounded;
    };
    for (const Case& c :
         {Case{1.2345, 1.235}, {1.2344, 1.234}, {-1.2345, -1.235}, {0.0005, 0.001}, {2.9996, 3}, {0, 0}})
        EXPECT_EQ(roundedTo3Decimals(c.value), c.rounded) << c.value;
}

TEST(EventsSidecar, ClipsAndClicksAreOnTheEditTimeline) {
    EditPayload edit;
    // Given a take cut between 4 and 6 s, its second half twice as fast, and a fragment that stands still.
    edit.fragments = {fragment(6, 10, 2, 1), fragment(0, 4, 1, 0), fragment(1, 2, 0, 2)};
    const std::vector events{press(1, 0.12345, 0.5, MouseButton::Right, 2), press(5, 0.5, 0.5), press(7, 0.1, 0.9),
                             press(9, 1, 0, MouseButton::Other)};
    const JSONValue expected = parsed(R"([
        {"t":0,"track":"clip","type":"fragment","endT":4,"sourceStart":0,"sourceEnd":4,"speed":1},
        {"t":4,"track":"clip","type":"fragment","endT":6,"sourceStart":6,"sourceEnd":10,"speed":2},
        {"t":6,"track":"clip","type":"fragment","endT":6,"sourceStart":1,"sourceEnd":2,"speed":0},
        {"t":1,"track":"cursor","type":"click","x":0.123,"y":0.5,"button":"right","clickCount":2},
        {"t":4.5,"track":"cursor","type":"click","x":0.1,"y":0.9,"button":"left","clickCount":1},
        {"t":5.5,"track":"cursor","type":"click","x":1,"y":0,"button":"other","clickCount":1}])");
    EXPECT_EQ(eventsOf(edit, events), expected);
}

TEST(EventsSidecar, ZoomEventsAreChangesOfTheFactor) {
    EditPayload edit;
    edit.zoomKeyframes = {zoom(5, 1), zoom(0, 1), zoom(1.00049, 1.75), zoom(3, 1.7500001)};
    edit.zoomKeyframes[0].transitionType = ZoomTransitionType::Linear;
    EXPECT_EQ(eventsOf(edit), parsed(R"([
        {"t":1,"track":"zoom","type":"zoomIn","endT":1.6,"factor":1.75,"transition":"smooth"},
        {"t":5,"track":"zoom","type":"zoomOut","endT":5.6,"factor":1,"transition":"linear"}])"));
}

TEST(EventsSidecar, PositionsTellTheTargetAndLeaveOutDerivedKeys) {
    EditPayload edit;
    edit.positionKeyframes = {{UUID{}, EditTime(2), 0.7, 0.6, 0.98, 0.61, {}, false},
                              {UUID{}, EditTime(1.5), 0.5, 0.5, 0.5, 0.5, {}, true},
                              {UUID{}, EditTime(1), 0.5, 0.5, 0.25, 0.5, {}, false}};
    EXPECT_EQ(eventsOf(edit), parsed(R"([
        {"t":1,"track":"position","type":"focusPoint","x":0.25,"y":0.5},
        {"t":2,"track":"position","type":"focusPoint","x":0.98,"y":0.61}])"));
}

TEST(EventsSidecar, EffectsCarryTheirMeaningAndTarget) {
    EditPayload edit;
    edit.tapTapKeyframes = {{UUID{}, EditTime(3), EditTime(3.9), 0.4, 0.6, 0.12, {}}};
    edit.maskKeyframes = {{UUID{}, EditTime(2), EditTime(9), {0.1, 0.2, 0.3, 0.4}, 12.3456}};
    edit.focusKeyframes = {{UUID{},
                            EditTime(1),
                            EditTime(4),
                            {0.33333, 0, 0.5, 1},
                            0.5_s,
                            EffectTarget{EffectTarget::Kind::Button, "Save"},
                            {}}};
    EXPECT_EQ(eventsOf(edit), parsed(R"([
        {"t":1,"track":"effects","type":"focus","endT":4,"rect":{"x":0.333,"y":0,"width":0.5,"height":1},
         "intent":"highlight_target","attentionPriority":"high","interaction":false,
         "target":{"kind":"button","label":"Save"}},
        {"t":2,"track":"effects","type":"mask","endT":9,"rect":{"x":0.1,"y":0.2,"width":0.3,"height":0.4},
         "blurRadius":12.346,"intent":"obscure_content","attentionPriority":"low","interaction":false},
        {"t":3,"track":"effects","type":"tapTap","endT":3.9,"x":0.4,"y":0.6,
         "intent":"read_this","attentionPriority":"high","interaction":false}])"));
}

TEST(EventsSidecar, TheCameraBubbleStaysInsideTheFrame) {
    EditPayload edit;
    edit.camera = CameraSettings{{0.95, -0.2, 0.2, 0.001}, 0.5, true, 0_s};
    struct Case {
        bool hasCamera, isEnabled, shown;
    };
    for (const Case& c : {Case{true, true, true}, {false, true, false}, {true, false, false}}) {
        edit.cameraEnabled = c.isEnabled;
        EventsSidecarSubject subject = subjectOf(edit, {});
        subject.recordingHasCamera = c.hasCamera;
        const JSONValue sidecar = parseJSON(encode(makeEventsSidecar(subject))).value();
        EXPECT_EQ(sidecar["summary"]["hasCameraOverlay"], c.shown);
        const JSONValue bubble = parsed(R"([{"t":0,"track":"overlay","type":"cameraBubble","endT":12.346,
                                             "rect":{"x":0.8,"y":0,"width":0.2,"height":0.02}}])");
        EXPECT_EQ(sidecar["events"], c.shown ? bubble : JSONValue::array());
    }
}

TEST(EventsSidecar, SaysWhatTheFileIs) {
    EditPayload edit;
    edit.fragments = {fragment(0, 4, 1, 0)};
    edit.zoomKeyframes = {zoom(1, 2), zoom(2, 2), zoom(3, 1)};
    edit.maskKeyframes.resize(1);
    const std::vector events{press(1, 0.5, 0.5), press(5, 0.5, 0.5)}; // the second was cut out
    const JSONValue sidecar = parseJSON(encode(makeEventsSidecar(subjectOf(edit, events)))).value();
    EXPECT_EQ(sidecar["format"], "morvelin-events");
    EXPECT_EQ(sidecar["version"], 1);
    EXPECT_EQ(sidecar["generator"], "Morvelin 0.1.0 (founder mode)");
    EXPECT_EQ(sidecar["video"], parsed(R"({"file":"Demo.mp4","duration":12.346,
                                           "resolution":{"width":1920,"height":1080},"fps":60})"));
    EXPECT_EQ(sidecar["summary"], parsed(R"({"clicks":1,"zoomSegments":2,"fragments":1,"hasCameraOverlay":false,
                                             "effects":{"focus":0,"mask":1,"tapTap":0}})"));
    EXPECT_EQ(sidecar["effectSemantics"].size(), 3U);
    EXPECT_EQ(sidecar["effectSemantics"]["tapTap"]["geometry"], "point");
    EXPECT_EQ(sidecar["conventions"]["time"], "seconds in the exported video timeline");
}

TEST(EventsSidecar, IsWrittenForReadersOfText) {
    EditPayload edit;
    EventsSidecarSubject subject = subjectOf(edit, {});
    subject.videoFile = "a/b.mp4";
    subject.duration = 2_s;
    subject.applicationVersion = "";
    const std::string text = encode(makeEventsSidecar(subject));
    EXPECT_THAT(text, testing::HasSubstr("\"duration\": 2,"));
    EXPECT_THAT(text, testing::HasSubstr("\"file\": \"a/b.mp4\","));
    EXPECT_THAT(text, testing::HasSubstr("\"generator\": \"Morvelin dev (founder mode)\","));
    EXPECT_LT(text.find("\"conventions\""), text.find("\"effectSemantics\"")) << "keys are sorted";

    for (const auto& [video, sidecar] : {std::pair{"/a/Film.mp4", "/a/Film.events.json"},
                                         {"/a/v1.2.gif", "/a/v1.2.events.json"},
                                         {"/a.b/Film", "/a.b/Film.events.json"}})
        EXPECT_EQ(sidecarPath(video, "events"), sidecar);
}

TranscriptWord word(double t, double endT, const char* text, double confidence = 0.9) {
    return {SourceTime(t), SourceTime(endT), text, confidence};
}

JSONValue transcriptOf(const HeardTranscript& heard, const std::vector<VideoFragment>& fragments) {
    return parseJSON(encode(makeTranscriptSidecar({heard, fragments, "a/Demo.gif", 12.34567_s, ""}))).value();
}

TEST(TranscriptSidecar, WordsGoWithThePictureAndAreGroupedAnew) {
    // Given a take cut between 4 and 6 s, its second half twice as fast, and a fragment that stands still.
    const std::vector fragments{fragment(6, 10, 2, 1), fragment(0, 4, 1, 0), fragment(4.5, 5, 0, 2)};
    HeardTranscript heard{{"parakeet", "en", {}, {}}, {}};
    heard.transcript.segments = {
        TranscriptSegment::of({word(3.4, 3.8, "I", 0.8), word(3.9, 4.1, "cut"), word(4.6, 4.8, "away")}),
        TranscriptSegment::of({word(6.0005, 6.5, "begin.", 0.7), word(7, 8, "Done", 0.5), word(9.9, 10.2, "late")})};
    EXPECT_EQ(transcriptOf(heard, fragments), parsed(R"json({
        "format":"morvelin-transcript", "version":1, "generator":"Morvelin dev (founder mode)",
        "video":{"file":"a/Demo.gif","duration":12.346}, "language":"en", "engine":"parakeet",
        "segments":[
            {"t":3.4,"endT":4.25,"text":"I begin.","confidence":0.75,"words":[
                {"t":3.4,"endT":3.8,"text":"I","confidence":0.8},
                {"t":4,"endT":4.25,"text":"begin.","confidence":0.7}]},
            {"t":4.5,"endT":5,"text":"Done","confidence":0.5,"words":[
                {"t":4.5,"endT":5,"text":"Done","confidence":0.5}]}]})json"));

    heard.transcript.language.reset();
    const JSONValue nothingLeft = transcriptOf(heard, {});
    EXPECT_FALSE(nothingLeft.contains("language"));
    EXPECT_EQ(nothingLeft["segments"], JSONValue::array());
}

TEST(TranscriptSidecar, MovedSoundTakesItsWordsAlong) {
    // Given sound that is heard a second later than its picture, and none of the second fragment's.
    std::vector fragments{fragment(0, 4, 1, 0), fragment(4, 8, 1, 1)};
    fragments[0].audio = FragmentAudio{1_s, {}, SourceTime(3), false};
    fragments[1].audio = FragmentAudio{0_s, {}, {}, true};
    const TemporaryFolder bundle;
    const FounderSourceTranscript stored{
        "parakeet",
        {},
        {},
        {TranscriptSegment::of({word(0.5, 1, "early"), word(2.5, 3.2, "trimmed"), word(5, 5.5, "mute")})}};
    ASSERT_TRUE(ProjectBundle::writeTranscript(stored, bundle.path()));
    EditPayload edit;
    edit.fragments = fragments;
    SeededIdSource ids(1);
    const SystemClock clock;
    const auto heard = [&](AudioStack::RecordingSound sound) {
        return heardTranscript(bundle.path(), edit, sound, {ids, clock}, [](std::string_view) {}).value();
    };
    const JSONValue moved = transcriptOf(heard(AudioStack::RecordingSound::Audible), fragments);
    EXPECT_EQ(moved["segments"].size(), 1U);
    EXPECT_EQ(moved["segments"][0]["words"], parsed(R"([{"t":1.5,"endT":2,"text":"early","confidence":0.9}])"));
    const JSONValue written = transcriptOf(heard(AudioStack::RecordingSound::Silent), fragments);
    EXPECT_EQ(written["segments"][0]["t"], 0.5) << "lines of a take without sound go with the picture";
    EXPECT_FALSE(heardTranscript(bundle.path() / "gone", edit, AudioStack::RecordingSound::Audible, {ids, clock},
                                 [](std::string_view) {}));
}

} // namespace
} // namespace morvelin
