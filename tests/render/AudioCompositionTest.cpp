// What is heard when: pieces of sound laid on the edit timeline.
#include "render/AudioComposition.h"

#include <limits>

#include <gmock/gmock.h>

namespace morvelin {
namespace {

using namespace FragmentCompositionBuilder;
using AudioLayout::Piece;
using testing::ElementsAre;
using testing::IsEmpty;

Piece piece(double start, double end, double source, double speed = 1) {
    return {std::nullopt, EditTime(start), EditTime(end), SourceTime(source), speed};
}

TEST(AudioComposition, PiecesThatWereMeantToTouchDo) {
    struct Case {
        const char* what;
        std::vector<Piece> pieces;
        std::vector<std::array<double, 4>> segments; ///< start, end, of the file from, to
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const Case& c :
         {Case{"a gap of 3 ms closes, and moves what follows by it",
               {piece(0, 1, 5), piece(1.003, 2, 7), piece(2, 3, 8)},
               {{0, 1, 5, 6}, {1, 1.997, 7, 7.997}, {1.997, 2.997, 8, 9}}},
          {"one of 4 ms too", {piece(0, 1, 5), piece(1.004, 2.004, 7)}, {{0, 1, 5, 6}, {1, 2, 7, 8}}},
          {"one of 5 ms stays", {piece(0, 1, 5), piece(1.005, 2, 7)}, {{0, 1, 5, 6}, {1.005, 2, 7, 7.995}}},
          {"at the start", {piece(0.003, 1.003, 5)}, {{0, 1, 5, 6}}},
          {"an overlap is put off", {piece(0, 1, 5), piece(0.5, 1.5, 7)}, {{0, 1, 5, 6}, {1, 2, 7, 8}}},
          {"at double speed", {piece(0, 1, 5, 2), piece(1, 2, 7)}, {{0, 1, 5, 7}, {1, 2, 7, 8}}},
          {"a speed next to 1 is none", {piece(0, 1, 5, 1.001)}, {{0, 1.001, 5, 6.001}}},
          {"limited to the file", {piece(0, 2, 9), piece(2, 3, 11)}, {{0, 1, 9, 10}}},
          {"sound that begins late", {piece(1, 3, 0, 2)}, {{1.25, 3, 0.5, 4}}},
          {"as good as nothing",
           {piece(0, 0.001, 5), piece(1, 2, 9.999), piece(2, 2.001, 5, 2)},
           {{2, 2.001, 5, 5.002}}},
          {"impossible",
           {piece(nan, 1, 0), piece(0, nan, 0), piece(0, 1, nan), piece(0, 1, 5, nan), piece(0, 1, 5, 0),
            piece(1, 0, 5)},
           {}}}) {
        const auto segments = layOut(c.pieces, {SourceTime(0.5), SourceTime(10)});
        ASSERT_EQ(segments.size(), c.segments.size()) << c.what;
        for (std::size_t i = 0; i < segments.size(); ++i) {
            const AudioTrack::Segment& segment = segments[i];
            const std::array<double, 4> times{segment.start.value, segment.end.value, segment.sourceStart.value,
                                              segment.sourceEnd.value};
            EXPECT_THAT(times, testing::Pointwise(testing::DoubleNear(1e-9), c.segments[i])) << c.what;
            EXPECT_GE(segment.start, i > 0 ? segments[i - 1].end : EditTime()) << c.what;
        }
    }
}

TEST(AudioComposition, TheRecordingIsHeardAsItsTracksSay) {
    const VideoFragment whole{UUID{}, SourceTime(0), SourceTime(4), 1, 0, {}};
    VideoFragment moved = whole;
    moved.audio = FragmentAudio{0.5_s, {}, {}, false};
    NarrationTake take;
    const AudioStack::Layer recording{AudioTrackRef::kRecordingID, {}, {}, {piece(0, 4, 0)}};
    const AudioStack::Layer voice{UUID{{1}}, take, "voice.m4a", {piece(1, 2, 0)}};
    const AudioStack::Layer over{UUID{{2}}, take, "over.m4a", {piece(0, 9, 0)}};
    const AudioMix::Take voiceOver{"voice.m4a", {piece(1, 2, 0)}};
    struct Case {
        const char* what;
        std::vector<AudioStack::Layer> layers;
        VideoFragment fragment;
        AudioMix mix;
    };
    for (const Case& c :
         {Case{"alone", {recording}, whole, {AudioMix::LaidOut{}, {}}},
          {"with sound of its own", {recording}, moved, {AudioMix::Clipped{{piece(0, 4, 0)}}, {}}},
          {"under a take",
           {voice, recording},
           whole,
           {AudioMix::Clipped{{piece(0, 1, 0), piece(2, 4, 2)}}, {voiceOver}}},
          {"unticked", {voice}, whole, {AudioMix::Muted{}, {voiceOver}}},
          {"wholly covered", {over, recording}, whole, {AudioMix::Muted{}, {{"over.m4a", {piece(0, 9, 0)}}}}},
          {"nothing", {}, whole, {}}})
        EXPECT_EQ(audioMix(c.layers, std::span(&c.fragment, 1)), c.mix) << c.what;
}

TEST(AudioComposition, EachFileWithSoundHasATrack) {
    const EditComposition picture({{EditTime(0), EditTime(1), SourceTime(2), SourceTime(4), 2},
                                   {EditTime(1), EditTime(3), SourceTime(6), SourceTime(8), 1}});
    const AudioSpanOf spanOf = [](const std::filesystem::path& file) -> std::optional<SoundSpan> {
        if (file == "broken.m4a") return std::nullopt;
        return SoundSpan{SourceTime(0), SourceTime(7)};
    };
    const std::vector<AudioMix::Take> takes{{"broken.m4a", {piece(0, 1, 0)}}, {"voice.m4a", {piece(1, 2, 0)}}};
    const AudioTrack voice{"voice.m4a", {{EditTime(1), EditTime(2), SourceTime(0), SourceTime(1), 1}}};
    const AudioTrack recording{"recording.mov",
                               {{EditTime(0), EditTime(1), SourceTime(2), SourceTime(4), 2},
                                {EditTime(1), EditTime(2), SourceTime(6), SourceTime(7), 1}}};
    EXPECT_THAT(buildAudio({AudioMix::LaidOut{}, takes}, picture, "recording.mov", spanOf),
                ElementsAre(recording, voice));
    EXPECT_THAT(buildAudio({AudioMix::Muted{}, takes}, picture, "recording.mov", spanOf), ElementsAre(voice));
    EXPECT_THAT(buildAudio({AudioMix::LaidOut{}, {}}, picture, "broken.m4a", spanOf), IsEmpty());
}

} // namespace
} // namespace morvelin
