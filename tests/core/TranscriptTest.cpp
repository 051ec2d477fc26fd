// How words become segments.

#include <gmock/gmock.h>

#include "core/Transcript.h"

namespace morvelin {
namespace {

TranscriptWord word(double t, double endT, std::string text = "w", double confidence = 1) {
    return {SourceTime(t), SourceTime(endT), std::move(text), confidence};
}

TEST(TranscriptSegments, BreakAtPausesSentencesAndLongSpans) {
    struct Case {
        const char* name;
        std::vector<TranscriptWord> words;
        std::vector<std::string> texts;
    };
    std::vector<TranscriptWord> longRun;
    for (int i = 0; i < 20; ++i) longRun.push_back(word(i, i + 1));
    std::string fifteen = "w";
    for (int i = 1; i < 15; ++i) fifteen += " w";
    const Case cases[] = {
        {"nothing", {}, {}},
        {"a pause of 0.8 s, which has no exact difference", {word(0, 1.3, "a"), word(2.1, 3, "b")}, {"a", "b"}},
        {"a pause of 0.79 s", {word(0, 1.3, "a"), word(2.09, 3, "b")}, {"a b"}},
        {"ends of sentences",
         {word(0, 1, "a?"), word(1, 2, "b!"), word(2, 3, "c."), word(3, 4, "d,"), word(4, 5, "e")},
         {"a?", "b!", "c.", "d, e"}},
        {"more than 15 s", longRun, {fifteen, "w w w w w"}},
        {"words out of order", {word(1, 2, "b"), word(0, 1, "a")}, {"a b"}},
        {"a single word beyond 15 s", {word(0, 20, "a"), word(20, 21, "b")}, {"a", "b"}},
    };
    for (const Case& c : cases) {
        std::vector<std::string> texts;
        for (const auto& segment : FounderSourceTranscript::segmentsFrom(c.words)) texts.push_back(segment.text);
        EXPECT_EQ(texts, c.texts) << c.name;
    }
}

TEST(TranscriptSegments, TakeTheirTimesAndTheirConfidenceFromTheWords) {
    const auto segments = FounderSourceTranscript::segmentsFrom(
        {word(0.5, 1, "a", 0.9), word(1, 1.25, "b", 0.8), word(1.25, 2, "c", 0.5)});
    ASSERT_EQ(segments.size(), 1u);
    EXPECT_EQ(segments[0].t, SourceTime(0.5));
    EXPECT_EQ(segments[0].endT, SourceTime(2));
    EXPECT_EQ(segments[0].confidence, 0.733);
    EXPECT_EQ(segments[0].words.size(), 3u);
}

} // namespace
} // namespace morvelin
