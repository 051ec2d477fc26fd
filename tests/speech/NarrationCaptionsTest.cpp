// One caption track from all that is heard, and when captions that a person edited stay.

#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "speech/NarrationCaptions.h"
#include "speech/SpeechFixture.h"
#include "speech/TakeWords.h"

namespace morvelin::NarrationCaptions {
namespace {

using namespace test;
using AudioStack::Layer;

class NarrationCaptionsTest : public testing::Test {
protected:
    NarrationTake& addTake(int number, double start, double duration, std::vector<TranscriptWord> words) {
        NarrationTake take;
        take.storedID = id(number);
        take.timelineStart = EditTime(start);
        take.duration = Seconds(duration);
        take.createdAt = Date::fromUnixSeconds(number);
        take.storedPieces = {{{}, 0_s, Seconds(duration), EditTime(start)}};
        if (!words.empty()) take.words = std::move(words);
        put(take.fileURL(m_folder.path()), "sound");
        m_takes.push_back(take);
        return m_takes.back();
    }
    static AudioTrackRef track(int take) { return {id(take), id(take), true, {}}; }

    AudioStack::Edit edit() { return {m_fragments, m_takes, m_folder.path(), AudioStack::RecordingSound::Audible}; }
    Composition composed(const AudioTrackList& tracks) {
        return compose(AudioStack::layers(tracks, edit()), m_fragments, m_transcript, m_maker.maker);
    }
    /// The engine and the lines, with a star where something heard has no known words.
    std::string text(const AudioTrackList& tracks) {
        const Composition made = composed(tracks);
        const char* star = made.isComplete ? "" : "*";
        return made.track ? fmt::format("{}{}: {}", made.track->engine, star, shown(made.track->cues)) : star;
    }
    Synced synced(const AudioTrackList& before, const AudioTrackList& after, EditedCaptions edited) {
        return sync({before, after, edit(), m_captions, m_transcript}, edited, m_maker.maker);
    }

    TemporaryFolder m_folder;
    Maker m_maker;
    std::vector<NarrationTake> m_takes;
    std::vector<VideoFragment> m_fragments{fragment(0, 0, 10)};
    std::optional<FounderSourceTranscript> m_transcript = transcriptOf(words("a b c d e f", 0));
    std::optional<CaptionTrack> m_captions;
    AudioTrackRef m_recording = AudioTrackRef::recording();
};

TEST_F(NarrationCaptionsTest, ComposesWhatIsHeardOfEachTrack) {
    addTake(1, 2, 2, words("x y"));
    addTake(2, 0, 10, {});
    EXPECT_EQ(text({m_recording}), "recogniser: 0-4 a b c d | 4-6 e f");
    EXPECT_EQ(text({track(1)}), "narration: 2-4 x y");
    EXPECT_EQ(text({track(1), m_recording}), "tracks: 0-2 a b | 2-4 x y | 4-6 e f");
    EXPECT_EQ(text({m_recording, track(1)}), "recogniser: 0-4 a b c d | 4-6 e f") << "the take is not heard";
    EXPECT_EQ(text({track(2), m_recording}), "*") << "a take without words";
    EXPECT_EQ(text({track(1), track(2)}), "narration*: 2-4 x y");
    EXPECT_EQ(text({}), "");

    const auto transcript = composed({track(1), m_recording}).transcript.value();
    EXPECT_EQ(transcript.engine, "tracks");
    EXPECT_EQ(transcript.createdAt, Date::fromUnixSeconds(1)) << "the first part's";
    EXPECT_EQ(composed({track(1), m_recording}).track->language, "en") << "the first that there is";
    EXPECT_EQ(shown(transcript.segments), "0-6 a b e f | 2-4 x y");

    m_transcript.reset();
    EXPECT_EQ(text({m_recording}), "*");
    m_transcript = transcriptOf({});
    EXPECT_EQ(text({m_recording}), "recogniser: ") << "nothing was said";
    EXPECT_EQ(text({track(1), m_recording}), "narration: 2-4 x y") << "and the take's engine stays";
}

TEST_F(NarrationCaptionsTest, ACutNeverLeavesOutTheRecordingsWordsButMovedSoundDoes) {
    const std::string whole = text({m_recording});
    m_fragments = {fragment(0, 0, 2), fragment(1, 4, 10)};
    EXPECT_EQ(text({m_recording}), whole);
    m_fragments = {fragment(0, 0, 3, 1, FragmentAudio{0_s, {}, {}, true}), fragment(1, 3, 10)};
    EXPECT_EQ(text({m_recording}), whole) << "removed sound is left out on output";
    m_fragments = {fragment(0, 0, 2, 1, FragmentAudio{1_s, {}, {}, false}), fragment(1, 2, 10)};
    EXPECT_EQ(text({m_recording}), "recogniser: 0-4 a c d | 4-6 e f") << "what gave way to other sound";
}

TEST_F(NarrationCaptionsTest, TakesWordsComeToTheRecordingsTime) {
    m_fragments = {fragment(0, 0, 2), fragment(1, 4, 8, 2)};
    NarrationTake& take = addTake(
        1, 0, 6,
        {word(0.5, 1, "one"), word(1.5, 2, "two"), word(2, 2.5, "three"), word(3.5, 3.9, "cut"), word(4.1, 5, "out")});
    EXPECT_EQ(text({track(1)}), "narration: 0.5-2 one two | 4-5 three | 7-7.8 cut")
        << "'two' ends with its fragment, and the video with the second 4";
    take.storedPieces = {{{}, 0_s, 1.2_s, EditTime(1)}, {{}, 1.2_s, 6_s, EditTime(3)}};
    EXPECT_EQ(text({track(1)}), "narration: 1.5-2 one | 6.6-8 two three");
}

TEST_F(NarrationCaptionsTest, AGeneratedTakesScriptGivesOneLineEach) {
    NarrationTake& take = addTake(1, 0, 10, words("one two three four five six seven"));
    take.source = NarrationTake::Source::ElevenLabs;
    take.script = "one two three four five \r\n\n six seven";
    EXPECT_EQ(text({track(1)}), "elevenlabs/tts: 0-5 one two three four five | 5-7 six seven")
        << "a line may be longer than 4 s";
    take.modelID = "m";
    take.script = "one two three four five six seven eight";
    EXPECT_EQ(text({track(1)}), "elevenlabs/m: 0-4 one two three four | 4-7 five six seven") << "the 4 s rule";
    take.script = "one two three four five six seven";
    take.revoiced = true;
    EXPECT_EQ(text({track(1)}), "elevenlabs/m: 0-4 one two three four | 4-7 five six seven");
    take.revoiced = false;
    addTake(2, 4, 3, words("A B C"));
    EXPECT_EQ(text({track(2), track(1)}), "tracks: 0-4 one two three four | 4-7 A B C") << "what is left of a line";
}

TEST_F(NarrationCaptionsTest, EditsAreFoundByComparison) {
    const CaptionTrack made = *composed({m_recording}).track;
    EXPECT_FALSE(isEdited(std::nullopt, made));
    EXPECT_TRUE(isEdited(made, std::nullopt));
    EXPECT_FALSE(isEdited(made, composed({m_recording}).track)) << "ids don't count";
    CaptionTrack other = made;
    other.cues[0].endT = other.cues[0].endT - 0.0009_s;
    EXPECT_FALSE(isEdited(other, made));
    other.cues[0].endT = other.cues[0].endT - 0.0009_s;
    EXPECT_TRUE(isEdited(other, made));
    other = made;
    other.cues[1].text += "!";
    EXPECT_TRUE(isEdited(other, made));
    other.cues.pop_back();
    EXPECT_TRUE(isEdited(other, made));
}

TEST_F(NarrationCaptionsTest, SyncingWritesUnlessAPersonEditedOrWordsAreMissing) {
    using enum NarrationCaptionOutcome;
    addTake(1, 2, 2, words("x y"));
    addTake(2, 0, 10, {});
    const AudioTrackList alone{m_recording};
    const AudioTrackList both{track(1), m_recording};
    const AudioTrackList wordless{track(2), m_recording};
    const std::optional<CaptionTrack> own = composed(alone).track;
    std::optional<CaptionTrack> edited = own;
    edited->cues[0].text = "by hand";
    CaptionTrack later = *composed(both).track;
    std::optional<CaptionTrack> empty = own;
    empty->cues.clear();

    struct Case {
        const char* name;
        std::optional<CaptionTrack> captions;
        AudioTrackList before, after;
        EditedCaptions policy;
        NarrationCaptionOutcome outcome;
        bool predate;
        std::optional<CaptionTrack> expected;
    };
    using enum EditedCaptions;
    const Case cases[] = {
        {"unedited", own, alone, both, Keep, Written, false, later},
        {"none yet", {}, alone, both, Keep, Written, false, later},
        {"edited", edited, alone, both, Keep, KeptEdited, true, edited},
        {"edited, and to be replaced", edited, alone, both, Replace, Written, false, later},
        {"edited to what is heard now", later, alone, both, Keep, KeptEdited, false, later},
        {"without words", own, alone, wordless, Replace, NoTimings, true, own},
        {"without words or captions", {}, alone, wordless, Keep, NoTimings, false, {}},
        {"without words, without lines", empty, alone, wordless, Keep, NoTimings, false, empty},
        {"nothing is heard", own, alone, {}, Keep, NoTimings, false, {}},
        {"nothing is heard, edited", edited, alone, {}, Keep, KeptEdited, true, edited},
    };
    for (const Case& c : cases) {
        m_captions = c.captions;
        const Synced result = synced(c.before, c.after, c.policy);
        EXPECT_EQ(result.outcome, c.outcome) << c.name;
        EXPECT_EQ(result.predate, c.predate) << c.name;
        ASSERT_EQ(result.captions.has_value(), c.expected.has_value()) << c.name;
        if (c.expected) { EXPECT_TRUE(isSame(*result.captions, *c.expected)) << c.name; }
    }
}

} // namespace
} // namespace morvelin::NarrationCaptions
