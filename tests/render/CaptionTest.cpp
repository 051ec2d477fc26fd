// Which caption shows when, which of its words are lit, and how its lines are set.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CompositorScenes.h"
#include "render/CaptionLayer.h"
#include "render/CaptionText.h"

namespace morvelin {
namespace {

using namespace test;

constexpr Rectangle kVideoRect{80, 45, 800, 450};

TimelineCue cue(double t, double endT, std::string text, std::vector<TimelineWord> words = {}) {
    return {UUID{}, EditTime(t), EditTime(endT), std::move(text), std::move(words)};
}

TimelineWord word(double t, std::string text) { return {EditTime(t), EditTime(t + 0.1), std::move(text), 1}; }

/// The words at a moment, those that aren't lit in brackets.
std::string shownAt(const std::vector<TimelineCue>& cues, double t) {
    CompositionInstruction instruction;
    instruction.captionCues = cues;
    std::string shown;
    if (const auto caption = captionAt(instruction, kVideoRect, EditTime(t)))
        for (const CaptionWord& one : caption->words) shown += one.isLit ? one.text + " " : "(" + one.text + ") ";
    return shown.empty() ? shown : shown.substr(0, shown.size() - 1);
}

TEST(Captions, TheFirstCueThatHoldsTheMomentShows) {
    const std::vector<TimelineCue> cues{cue(1, 2, "a"), cue(2, 3, " b\n c "), cue(3.5, 4, " \n\t"), cue(3.5, 5, "d")};
    for (const auto& [t, text] : std::vector<std::pair<double, std::string>>{{0.999, ""},
                                                                             {1, "a"},
                                                                             {2, "a"},
                                                                             {2.001, "b c"},
                                                                             {3, "b c"},
                                                                             {3.2, ""},
                                                                             {3.7, ""},
                                                                             {4.5, "d"},
                                                                             {5.001, ""}})
        EXPECT_EQ(shownAt(cues, t), text) << t;
}

TEST(Captions, WordsLightAtTheirOwnTimes) {
    const std::vector<TimelineWord> heard{word(1, "open"), word(1.5, "the"), word(2, "door")};
    struct Case {
        const char* what;
        TimelineCue line;
        double t;
        std::string shown;
    };
    for (const Case& c : std::vector<Case>{
             {"at a word's start", cue(0.5, 3, "open the door", heard), 1.5, "open the (door)"},
             {"before the first", cue(0.5, 3, "open the door", heard), 0.9, "(open) (the) (door)"},
             {"rewritten word by word", cue(0.5, 3, "Close that window", heard), 1.6, "Close that (window)"},
             {"without words", cue(0.5, 3, "open the door"), 0.5, "open the door"},
             {"a cut took words", cue(0.5, 3, "Now open up the old door again", heard), 1.6,
              "Now open up the old (door) (again)"},
             {"a word of two pieces", cue(0.5, 3, "New York calls", {word(1, "New York"), word(2, "calls")}), 1,
              "New York (calls)"},
             {"fewer pieces than words", cue(0.5, 3, "knock knock", heard), 1.2, "knock (knock)"},
             {"more pieces, all others", cue(0.5, 3, "q r s t u v", heard), 1.6, "q r s t (u) (v)"},
             {"out of order", cue(0.5, 3, "a b", {word(2, "a"), word(1, "b")}), 1.5, "(a) b"}})
        EXPECT_EQ(shownAt({c.line}, c.t), c.shown) << c.what;
}

TEST(Captions, TheFontFollowsThePictureWithinItsBounds) {
    struct Case {
        double height, size, font;
    };
    for (const Case& c : {Case{1000, 1, 45}, {1000, 0.1, 22.5}, {1000, 9, 67.5}, {40, 1, 4}}) {
        CompositionInstruction instruction;
        instruction.captionCues = {cue(0, 1, "a")};
        instruction.captionSize = c.size;
        EXPECT_DOUBLE_EQ(captionAt(instruction, {0, 0, 1600, c.height}, EditTime(0))->fontSize, c.font);
    }
}

/// How many cells each word has, which is in how many lines it stands.
std::vector<int> linesOfWords(const CaptionText& text) {
    std::vector<int> lines;
    for (const WordCell& cell : text.wordCells()) {
        if (cell.word >= lines.size()) lines.resize(cell.word + 1);
        ++lines[cell.word];
    }
    return lines;
}

TEST(CaptionText, BreaksBetweenWordsAlone) {
    const std::string text =
        "state-of-the-art and/or well-known Straßenbahn, https://example.com/a Ελληνικά по-русски end";
    const double whole = CaptionText(text, 20, {1e6, 1e6}).width();
    for (int room = 260; room < whole + 40; room += 23) {
        const CaptionText lines(text, 20, {static_cast<double>(room), 1e6});
        EXPECT_LE(lines.width(), room);
        EXPECT_THAT(linesOfWords(lines), testing::ElementsAre(1, 1, 1, 1, 1, 1, 1, 1)) << room;
        const int fewest = static_cast<int>(std::ceil(whole / room));
        EXPECT_LE(lines.height(), (fewest + 2) * 25) << room;
    }
}

TEST(CaptionText, MakesItsLinesEven) {
    const std::string text = "one two three four five six seven eight nine ten";
    const double whole = CaptionText(text, 20, {1e6, 1e6}).width();
    const CaptionText lines(text, 20, {0.9 * whole, 1000});
    EXPECT_DOUBLE_EQ(lines.height(), 50);
    EXPECT_LT(lines.width(), 0.6 * whole) << "not a full line and a word";
}

TEST(CaptionText, BreaksAWordThatFitsNoLine) {
    const CaptionText lines("a Donaudampfschifffahrtsgesellschaftskapitän b", 20, {120, 1000});
    EXPECT_LE(lines.width(), 120);
    const std::vector<int> words = linesOfWords(lines);
    ASSERT_EQ(words.size(), 3U);
    EXPECT_GT(words[1], 2);
    EXPECT_EQ(words[0] + words[2], 2);
}

TEST(CaptionText, EndsWhereTheRoomEnds) {
    std::string text = "a";
    for (int i = 0; i < 5000; ++i) text += " word";
    const CaptionText lines(text, 20, {400, 110});
    EXPECT_LE(lines.height(), 110);
    EXPECT_LE(lines.width(), 400);
}

/// Every pixel of the output lies in just one area.
void expectPartition(const std::vector<WordArea>& areas, PixelSize output, const std::string& text) {
    std::vector<int> owners(static_cast<std::size_t>(output.width * output.height));
    for (const WordArea& area : areas) {
        EXPECT_TRUE(area.box.x % 2 == 0 && area.box.y % 2 == 0) << text;
        for (int y = area.box.y; y < area.box.bottom(); ++y)
            for (int x = area.box.x; x < area.box.right(); ++x)
                ++owners[static_cast<std::size_t>(y * output.width + x)];
    }
    EXPECT_TRUE(std::ranges::all_of(owners, [](int count) { return count == 1; })) << text;
}

TEST(CaptionLayer, AnyTextStaysInTheFrame) {
    const std::vector<std::string> texts{
        "Words in three lines because there are so many of them that two are too few",
        "今日はエージェントと一緒に設定を変更します。最初に設定画面を開いて、次にスイッチを探します。",
        "שלום and hello عالم مرحبا to all of you",
        "🚀🎉 👩‍👩‍👧‍👦 end",
        "Z̸̢a͠l҉g̵o̷ " + std::string(400, 'x'),
        "\u2066 \u200b \u202e"};
    for (const std::string& text : texts) {
        for (const PixelSize output : {PixelSize{640, 360}, {91, 161}, {16, 400}, {400, 16}}) {
            CompositionInstruction instruction;
            instruction.captionCues = {cue(0, 1, text)};
            instruction.captionSize = 1.5;
            const Rectangle video{output.width * 0.05, output.height * 0.05, output.width * 0.9, output.height * 0.9};
            const auto caption = captionAt(instruction, video, EditTime(0));
            if (!caption) continue;
            const CaptionArt art = captionArt(*caption, output);
            const double lowerEdge = video.bottom() - 0.05 * video.height;
            EXPECT_LE(art.lit.box.bottom(), std::ceil(lowerEdge)) << text;
            EXPECT_GE(art.lit.box.bottom(), std::floor(lowerEdge)) << text;
            expectPartition(art.areas, output, text);
        }
    }
}

TEST(CaptionLayer, LightingAWordRedrawsThatWordAlone) {
    const PixelSize output{640, 360};
    CompositionInstruction instruction;
    instruction.captionCues = {caption("The agent opens the settings and looks", {0, 0.2, 0.4, 0.6, 0.8, 1.0, 1.2})};
    CaptionLayer layer(output, Subsampling::Quarter);
    const auto boxesAt = [&](double t) {
        std::vector<PixelBox> boxes;
        layer.prepare(captionAt(instruction, {0, 0, 640, 360}, EditTime(t)), boxes);
        return boxes;
    };
    const std::vector<PixelBox> whole = boxesAt(0);
    ASSERT_EQ(whole.size(), 1U);
    EXPECT_TRUE(boxesAt(0.1).empty());
    const std::vector<PixelBox> oneWord = boxesAt(0.3);
    ASSERT_EQ(oneWord.size(), 1U);
    EXPECT_LT(oneWord[0].width * 3, whole[0].width);
    EXPECT_EQ(boxesAt(5), whole) << "the caption goes";
}

} // namespace
} // namespace morvelin
