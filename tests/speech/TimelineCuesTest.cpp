// Captions in the finished video, and the subtitle files.

#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "speech/SpeechFixture.h"
#include "speech/SubtitleFile.h"

namespace morvelin {
namespace {

using namespace test;
using AudioLayout::Piece;

Piece piece(double from, double to, double source, double speed = 1) {
    return {{}, EditTime(from), EditTime(to), SourceTime(source), speed};
}

CaptionTrack trackOf(std::vector<CaptionCue> cues) { return {1, "recogniser", {}, {}, std::move(cues)}; }

TEST(TimelineCues, GoWithThePictureWithoutPieces) {
    const std::vector<VideoFragment> cutAndFast{fragment(0, 0, 5), fragment(1, 8, 12, 2)};
    const std::tuple<const char*, CaptionCue, std::string> cases[] = {
        {"whole", cue(1, 1, 3, words("a b", 1)), "1-3 a b"},
        {"over a cut, whole though some words are gone", cue(1, 4, 9, words("a b c d e", 4)), "4-5.5 a b c d e"},
        {"in the cut", cue(1, 5.5, 7.5, words("a")), ""},
        {"filling the cut", cue(1, 5, 8, words("a")), ""},
        {"at double speed", cue(1, 10, 12, words("a")), "6-7 a"},
        {"past the end", cue(1, 11, 20, words("a")), "6.5-7 a"},
    };
    for (const auto& [name, cue, expected] : cases)
        EXPECT_EQ(shown(timelineCues(trackOf({cue}), cutAndFast, std::nullopt)), expected) << name;
    const auto placed = timelineCues(trackOf({cue(1, 4, 9, words("a b c d e", 4))}), cutAndFast, std::nullopt);
    EXPECT_EQ(shown(placed.at(0).words), "4-5 a | 5-5.5 e") << "what only touches the fragments is not in them";
}

TEST(TimelineCues, KeepOnlyTheWordsThatPiecesHold) {
    const std::vector<VideoFragment> fragments{fragment(0, 0, 20)};
    const auto through = [&](const CaptionCue& cue, std::vector<Piece> pieces) {
        return shown(timelineCues(trackOf({cue}), fragments, std::move(pieces)));
    };
    const CaptionCue four = cue(1, 0, 4.5, words("a b c d"));
    EXPECT_EQ(through(four, {piece(10, 14, 0)}), "10-14 a b c d") << "all words, the cue's own ends clamped";
    EXPECT_EQ(through(four, {piece(0, 2.5, 1.5)}), "0-2.5 b c d") << "narrowed at the lost end alone";
    EXPECT_EQ(through(four, {piece(0, 1.4, 0)}), "0-1 a");
    EXPECT_EQ(through(four, {piece(0, 1, 8)}), "");
    EXPECT_EQ(through(four, {}), "") << "an empty list is silence";
    EXPECT_EQ(through(cue(1, 0, 2), {piece(5, 6, 1)}), "5-6 ") << "a line without words goes by its span";
    EXPECT_EQ(through(cue(1, 0, 4, words("a b c d")), {piece(0, 2, 2), piece(8, 10, 0)}), "0-10 a b c d");
}

TEST(TimelineCues, OfTakesDontGoThroughTheRecordingsPieces) {
    const std::vector<VideoFragment> fragments{fragment(0, 0, 10, 1, FragmentAudio{0_s, {}, SourceTime(2), false})};
    const std::vector<AudioStack::Layer> layers{{id(1), {}, {}, {piece(0, 2, 0)}}};
    CaptionTrack track = trackOf({cue(1, 5, 6, words("a", 5))});
    for (const auto& [engine, expected] : {std::pair("recogniser", ""),
                                           {"narration", "5-6 a"},
                                           {"elevenlabs/tts", "5-6 a"},
                                           {"tracks", "5-6 a"},
                                           {"narrate", "5-6 a"}}) {
        track.engine = engine;
        EXPECT_EQ(shown(timelineCues(track, fragments, layers)), expected) << engine;
    }
}

TEST(SubtitleFiles, HaveTheirExactForm) {
    const std::vector<TimelineCue> cues{{{}, EditTime(-1), EditTime(1.2346), "One", {}},
                                        {{}, EditTime(3661.5), EditTime(3662), "Two\nlines", {}}};
    EXPECT_EQ(srt(cues), "1\n00:00:00,000 --> 00:00:01,235\nOne\n\n2\n01:01:01,500 --> 01:01:02,000\nTwo\nlines\n");
    EXPECT_EQ(vtt(cues), "WEBVTT\n\n00:00:00.000 --> 00:00:01.235\nOne\n\n01:01:01.500 --> 01:01:02.000\nTwo\nlines\n");
    EXPECT_EQ(srt({}), "");
    EXPECT_EQ(vtt({}), "WEBVTT\n\n");
}

TEST(SubtitleFiles, AreWrittenOrSayWhyNot) {
    const TemporaryFolder folder;
    const std::vector<TimelineCue> cues{{{}, EditTime(0), EditTime(1), "One", {}}};
    ASSERT_TRUE(writeSubtitles(cues, SubtitleFormat::SRT, folder.path() / "a.srt"));
    EXPECT_EQ(readFile(folder.path() / "a.srt").value(), srt(cues));
    EXPECT_EQ(writeSubtitles({}, SubtitleFormat::VTT, folder.path() / "b.vtt").error().description(),
              "every transcribed word falls in a cut");
    const std::string refused =
        writeSubtitles(cues, SubtitleFormat::VTT, folder.path() / "a.srt" / "c.vtt").error().description();
    EXPECT_TRUE(refused.starts_with("Could not write the caption file: ")) << refused;
    EXPECT_THAT(folder.names(), testing::ElementsAre("a.srt"));
}

} // namespace
} // namespace morvelin
