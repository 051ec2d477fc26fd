// How words become lines, and how a person edits those.

#include <gmock/gmock.h>

#include "speech/CaptionEdits.h"
#include "speech/SpeechFixture.h"
#include "speech/Words.h"

namespace morvelin {
namespace {

using namespace test;

class CaptionEditsTest : public testing::Test {
protected:
    CaptionTrack m_track;
    SeededIdSource m_ids{1};
};

TEST_F(CaptionEditsTest, LinesEndWithTheirSegmentAndAfterFourSeconds) {
    const std::tuple<const char*, std::vector<TranscriptWord>, std::string> cases[] = {
        {"nothing", {}, ""},
        {"exactly 4 s", {word(0.3, 1, "a"), word(1, 4.3, "b")}, "0.3-4.3 a b"},
        {"4.001 s", {word(0, 1, "a"), word(1, 4.001, "b"), word(4.001, 5, "c")}, "0-1 a | 1-5 b c"},
        {"one long word", {word(0, 6, "a"), word(6, 7, "b")}, "0-6 a | 6-7 b"},
        {"a segment's end", {word(0, 1, "a."), word(1, 2, "b"), word(2.7, 3, "c")}, "0-1 a. | 1-3 b c"},
    };
    for (const auto& [name, words, expected] : cases) {
        const auto cues = cuesFrom(FounderSourceTranscript::segmentsFrom(words), m_ids);
        EXPECT_EQ(shown(cues), expected) << name;
    }
}

TEST_F(CaptionEditsTest, NormalisingSortsAndCuts) {
    const std::tuple<const char*, std::vector<CaptionCue>, std::string> cases[] = {
        {"the later first", {cue(1, 2, 4, words("b")), cue(2, 0, 3, words("a"))}, "0-2 a | 2-4 b"},
        {"one that loses all its length", {cue(1, 1, 2, words("a")), cue(2, 1, 3, words("b"))}, "1-3 b"},
        {"one that ends before it starts", {cue(1, 3, 2, words("a"))}, ""},
        {"ones that touch", {cue(1, 0, 2, words("a")), cue(2, 2, 3, words("b"))}, "0-2 a | 2-3 b"},
    };
    for (const auto& [name, cues, expected] : cases) {
        m_track.cues = cues;
        normalize(m_track);
        EXPECT_EQ(shown(m_track.cues), expected) << name;
    }
}

TEST_F(CaptionEditsTest, RetimingStaysBetweenTheNeighboursAndKeepsTheLeastLength) {
    struct Case {
        const char* name;
        int cue;
        double start, end;
        std::string expected; ///< empty when refused
    };
    const Case cases[] = {
        {"moved", 2, 2.5, 3.5, "2.5-3.5"},
        {"over its neighbours", 2, 0, 9, "2-5"},
        {"the last past the video", 3, 5, 20, "5-10"},
        {"the right edge to 0.05 s", 2, 3, 3.05, "3-3.12"},
        {"the left edge to 0.05 s", 2, 3.95, 4, "3.88-4"},
        {"unchanged", 2, 3, 4, ""},
        {"unknown", 9, 0, 1, ""},
    };
    for (const Case& c : cases) {
        m_track.cues = {cue(1, 1, 2), cue(2, 3, 4), cue(3, 5, 6)};
        EXPECT_EQ(CaptionEdits::retime(m_track, id(c.cue), SourceTime(c.start), SourceTime(c.end), 10_s),
                  !c.expected.empty())
            << c.name;
        const auto* retimed = CaptionEdits::cueByID(m_track, id(c.cue));
        if (!c.expected.empty()) {
            EXPECT_EQ(fmt::format("{:g}-{:g}", retimed->t.value, retimed->endT.value), c.expected) << c.name;
        }
    }
    m_track.cues = {cue(1, 0, 1), cue(2, 1, 1.1), cue(3, 1.1, 2)};
    EXPECT_FALSE(CaptionEdits::retime(m_track, id(2), 1_s, 1.05_s, 10_s)) << "no room for 0.12 s";
    m_track.cues = {cue(1, 0, 1)};
    EXPECT_FALSE(CaptionEdits::retime(m_track, id(1), 0_s, 2_s, Seconds(-5))) << "a negative duration counts as 0";
}

TEST_F(CaptionEditsTest, ATextKeepsTheTimingsOfAsManyWords) {
    m_track.cues = {cue(1, 0, 3, {word(0, 0.5, "a", 0.5), word(1, 1.5, "b", 0.7), word(2, 3, "c", 0.9)})};
    const auto& cue = m_track.cues[0];
    EXPECT_TRUE(CaptionEdits::setText(m_track, id(1), "  a b d\n"));
    EXPECT_EQ(cue.text, "a b d");
    EXPECT_EQ(cue.words[2], word(2, 3, "d", 0.9));
    EXPECT_FALSE(CaptionEdits::setText(m_track, id(1), "a b d ")) << "nothing new";

    EXPECT_TRUE(CaptionEdits::setText(m_track, id(1),
                                      "a\xC2\xA0"
                                      "b"));
    EXPECT_THAT(cue.words, testing::ElementsAre(word(0, 1.5, "a", 0.7), word(1.5, 3, "b", 0.7)));
    EXPECT_TRUE(CaptionEdits::setText(m_track, id(1), "1 2 3 4 5 6 7"));
    EXPECT_EQ(cue.words[1].t, SourceTime(0.429)) << "in thousandths";
    EXPECT_TRUE(CaptionEdits::setText(m_track, id(1), " "));
    EXPECT_TRUE(cue.words.empty());
    EXPECT_TRUE(CaptionEdits::setText(m_track, id(1), "new"));
    EXPECT_THAT(cue.words, testing::ElementsAre(word(0, 3, "new", 1)));
}

TEST_F(CaptionEditsTest, AnEmptyLineGoesWhereThereIsRoom) {
    const auto added = [&](double time, double duration) {
        m_track.cues = {cue(1, 4, 5)};
        const auto made = CaptionEdits::addCue(m_track, SourceTime(time), Seconds(duration), m_ids);
        return made ? shown(std::vector{*CaptionEdits::cueByID(m_track, *made)}) : "";
    };
    EXPECT_EQ(added(1, 10), "1-3 ");
    EXPECT_EQ(added(3, 10), "3-4 ");
    EXPECT_EQ(added(3.9, 10), "") << "0.1 s before the next";
    EXPECT_EQ(added(3.88, 10), "3.88-4 ") << "0.12 s has no exact difference";
    EXPECT_EQ(added(4.5, 10), "") << "on a line";
    EXPECT_EQ(added(9.9, 10), "") << "at the video's end";
    EXPECT_EQ(added(6, -1), "");
    (void)added(1, 10);
    EXPECT_EQ(m_track.cues.back().id, id(1)) << "sorted";
}

TEST_F(CaptionEditsTest, SplittingDealsOutTheWords) {
    m_track.cues = {cue(1, 0, 3, words("a b c")), cue(2, 5, 6)};
    EXPECT_FALSE(CaptionEdits::split(m_track, id(1), 0.11_s, m_ids));
    EXPECT_FALSE(CaptionEdits::split(m_track, id(1), 2.89_s, m_ids));
    EXPECT_TRUE(CaptionEdits::split(m_track, id(1), 1.5_s, m_ids));
    EXPECT_EQ(shown(m_track.cues), "0-1.5 a b | 1.5-3 c | 5-6 ");
    EXPECT_EQ(m_track.cues[0].id, id(1));
    EXPECT_EQ(m_track.cues[0].words[1].endT, SourceTime(2)) << "the straddling word keeps its end";

    m_track.cues = {cue(1, 0, 3)};
    m_track.cues[0].text = "typed by hand";
    EXPECT_TRUE(CaptionEdits::split(m_track, id(1), 1_s, m_ids));
    EXPECT_EQ(shown(m_track.cues), "0-1 typed by hand | 1-3 ");
}

TEST_F(CaptionEditsTest, MergingAndRemoving) {
    m_track.cues = {cue(1, 0, 1, words("a")), cue(2, 2, 3, words("b", 2)), cue(3, 4, 5)};
    m_track.cues[0].text = " a ";
    EXPECT_FALSE(CaptionEdits::merge(m_track, id(3)));
    EXPECT_TRUE(CaptionEdits::merge(m_track, id(1)));
    EXPECT_EQ(shown(m_track.cues), "0-3 a b | 4-5 ");
    EXPECT_EQ(m_track.cues[0].words.size(), 2u);
    EXPECT_TRUE(CaptionEdits::merge(m_track, id(1)));
    EXPECT_EQ(shown(m_track.cues), "0-5 a b");
    EXPECT_FALSE(CaptionEdits::remove(m_track, id(3)));
    EXPECT_TRUE(CaptionEdits::remove(m_track, id(1)));
    EXPECT_TRUE(m_track.cues.empty());
}

TEST_F(CaptionEditsTest, HandlesSnapToOtherLinesAndToAllWords) {
    m_track.cues = {cue(1, 0, 2, {word(0.25, 1, "a")}), cue(2, 2, 3, {word(2, 2.5, "b")})};
    EXPECT_THAT(CaptionEdits::snapTimes(m_track, id(1)),
                testing::ElementsAre(SourceTime(0.25), SourceTime(1), SourceTime(2), SourceTime(2.5), SourceTime(3)));
    EXPECT_EQ(CaptionEdits::cueAt(m_track, 2_s)->id, id(1)) << "the first of two that touch";
    EXPECT_EQ(CaptionEdits::cueAt(m_track, 3.5_s), nullptr);
}

TEST(Words, AreCutAtAnyWhiteSpace) {
    EXPECT_THAT(wordsIn(" a\t\n b\xE2\x80\xA8\xC3\xA9t\xC3\xA9\xE3\x80\x80"
                        "d "),
                testing::ElementsAre("a", "b", "\xC3\xA9t\xC3\xA9", "d"));
    EXPECT_TRUE(wordsIn(" \n").empty());
    EXPECT_THAT(wordsIn("\x80\xFF stray"), testing::SizeIs(2)) << "bytes that are no text are kept";
    EXPECT_EQ(characterCount("\xC3\xA9t\xC3\xA9"), 3u);
}

} // namespace
} // namespace morvelin
