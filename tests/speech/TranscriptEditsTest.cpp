// Correcting a transcript, writing lines into it, and what its file tells.

#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "speech/SpeechFixture.h"
#include "speech/TranscriptCorrection.h"
#include "speech/TranscriptionStatus.h"
#include "speech/WrittenNarration.h"
#include "storage/TranscriptFile.h"

namespace morvelin {
namespace {

using namespace test;

std::vector<double> starts(const FounderSourceTranscript& transcript) {
    std::vector<double> all;
    for (const TranscriptSegment& segment : transcript.segments)
        for (const TranscriptWord& word : segment.words) all.push_back(word.t.value);
    return all;
}

TEST(TranscriptCorrection, SpreadsTheNewWordsOverTheOldTimings) {
    const FounderSourceTranscript five = transcriptOf(words("a b c d e"));
    const std::pair<const char*, std::vector<double>> cases[] = {
        {"A B C D E", {0, 1, 2, 3, 4}},
        {"one", {0}},
        {"1 2 3", {0, 2, 4}},
        {"1 2 3 4", {0, 1, 3, 4}},
        {"1 2 3 4 5 6 7 8 9", {0, 1, 1, 2, 2, 3, 3, 4, 4}},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(starts(corrected(five, text).value()), expected) << text;
    EXPECT_FALSE(corrected(five, " \n"));
    EXPECT_FALSE(corrected(transcriptOf({}), "a"));
}

TEST(TranscriptCorrection, KeepsWhatIsNotText) {
    FounderSourceTranscript old = transcriptOf({word(0.12345, 1, "wrong.", 0.5), word(3, 4, "last")});
    old.createdAt = Date::fromUnixSeconds(5);
    const FounderSourceTranscript made = corrected(old, "right last").value();
    EXPECT_EQ(std::tie(made.engine, made.language, made.createdAt), std::tie(old.engine, old.language, old.createdAt));
    EXPECT_EQ(made.segments.at(0).words.at(0), word(0.123, 1, "right", 0.5)) << "in thousandths";
    EXPECT_EQ(made.segments.size(), 2u) << "grouped anew, by the pause";
}

TEST(TranscriptCorrection, TakesUneditedCaptionsWithIt) {
    Maker maker;
    const std::optional<FounderSourceTranscript> before = transcriptOf(words("a b c"));
    const auto after = corrected(*before, "a B c");
    const std::optional<CaptionTrack> own = trackFrom(*before, maker.maker);
    CaptionTrack edited = *own;
    edited.cues[0].text = "mine";
    const std::vector<VideoFragment> fragments{fragment(0, 0, 5)};
    const std::vector<AudioStack::Layer> recording{
        {AudioTrackRef::kRecordingID, {}, {}, {{{}, EditTime(0), EditTime(5), SourceTime(0), 1}}}};
    for (const auto& layers : {recording, std::vector<AudioStack::Layer>()}) {
        const auto synced = [&](const std::optional<CaptionTrack>& captions) {
            return captionsAfterTranscriptChange(captions, before, after, layers, fragments, maker.maker);
        };
        EXPECT_EQ(shown(synced(own).captions->cues), "0-3 a B c") << layers.size();
        EXPECT_EQ(shown(synced(edited).captions->cues), "0-3 mine") << layers.size();
    }
}

class WrittenNarrationTest : public testing::Test {
protected:
    auto narrate(const char* text, double at, std::optional<Seconds> duration = {}) {
        return WrittenNarration::narrate({text, EditTime(at), duration}, {m_transcript, m_captions}, m_fragments,
                                         m_maker.maker);
    }

    Maker m_maker;
    std::optional<FounderSourceTranscript> m_transcript;
    std::optional<CaptionTrack> m_captions;
    std::vector<VideoFragment> m_fragments{fragment(0, 0, 4), fragment(1, 10, 20, 2)};
};

TEST_F(WrittenNarrationTest, AsksForFifteenCharactersASecond) {
    EXPECT_EQ(WrittenNarration::readingTime("Hi"), 1.2_s);
    EXPECT_EQ(WrittenNarration::readingTime(std::string(30, 'x')), 2_s);
    EXPECT_EQ(WrittenNarration::readingTime("\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9"
                                            "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9"
                                            "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9"),
              1.4_s)
        << "characters, not bytes";
}

TEST_F(WrittenNarrationTest, ALineSharesItsSpanAmongItsWords) {
    const auto made = narrate("  one\n two ", 3, 2_s).value();
    EXPECT_EQ(made.text, "one two");
    EXPECT_EQ(made.until, EditTime(5));
    EXPECT_THAT(made.transcript.segments.at(0).words, testing::ElementsAre(word(3, 4, "one"), word(10, 12, "two")))
        << "each where the video shows it";
    EXPECT_EQ(made.transcript.engine, "narrate");
    EXPECT_EQ(narrate("end", 8.5).value().until, EditTime(9)) << "no longer than the video";
    EXPECT_EQ(narrate(" ", 1).error().description(), "Narration text is empty.");
    for (const double at : {-0.5, 9.0, 30.0})
        EXPECT_EQ(narrate("x", at).error().description(),
                  fmt::format("{:.2f}s is outside this recording, which is 9.00s long.", at));
}

TEST_F(WrittenNarrationTest, LinesComeBesideWhatIsThere) {
    m_transcript = transcriptOf(words("a b"));
    m_captions = trackFrom(*m_transcript, m_maker.maker);
    m_captions->cues[0].text = "mine";
    const auto made = narrate("later", 2.5).value();
    EXPECT_EQ(shown(made.captions.cues), "0-2 mine | 2.5-3.7 later") << "edited lines stay";
    EXPECT_EQ(made.captions.cues[0].id, m_captions->cues[0].id);
    EXPECT_EQ(shown(made.transcript.segments), "0-2 a b | 2.5-3.7 later");
    EXPECT_EQ(made.transcript.engine, "recogniser");
    m_captions.reset();
    EXPECT_EQ(shown(narrate("first", 1).value().captions.cues), "0-1 a b | 1-2.2 first")
        << "without captions, those of the whole transcript";
}

TEST_F(WrittenNarrationTest, ClearingLeavesWhatTakesGive) {
    m_transcript = narrate("line", 1).value().transcript;
    m_captions = trackFrom(*m_transcript, m_maker.maker);
    const auto cleared = [&] {
        return WrittenNarration::captionsWithout(*m_transcript, m_captions, {}, m_fragments, m_maker.maker);
    };
    EXPECT_FALSE(cleared());
    m_captions->engine = "elevenlabs/m";
    m_captions->cues.push_back(cue(5, 3, 4, words("spoken", 3)));
    m_captions->cues[0].endT = 1.5_s;
    EXPECT_EQ(shown(cleared()->cues), "3-4 spoken");
    m_captions.reset();
    EXPECT_FALSE(cleared());
}

TEST(TranscriptionStatus, TellsWhatIsOnDisk) {
    const TemporaryFolder folder;
    const auto status = [&](SpeechModel model) {
        return writeJSON(toJSON(statusOnDisk(folder.path(), model)), JSONStyle::Compact);
    };
    EXPECT_EQ(status(SpeechModel::Missing), R"({"has_transcript":false,"model_downloaded":false,"status":"idle"})");
    put(folder.path() / "transcript.json", "{");
    EXPECT_EQ(status(SpeechModel::Downloaded), R"({"has_transcript":false,"model_downloaded":true,"status":"idle"})");
    ASSERT_TRUE(ProjectBundle::writeTranscript(transcriptOf(words("a")), folder.path()));
    EXPECT_EQ(status(SpeechModel::Missing), R"({"has_transcript":true,"model_downloaded":false,"status":"idle"})");
}

} // namespace
} // namespace morvelin
