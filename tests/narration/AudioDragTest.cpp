// Dragging a fragment's sound, and a piece of a take.

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "narration/AudioDrag.h"

namespace morvelin::AudioDrag {
namespace {

UUID id(int number) { return UUID{{static_cast<std::uint8_t>(number)}}; }

VideoFragment fragment(int order, double from, double to, double speed = 1, std::optional<FragmentAudio> audio = {}) {
    return {id(order + 1), SourceTime(from), SourceTime(to), speed, order, audio};
}

AudioDragState drag(Kind kind, int fragmentID, double by, const std::vector<VideoFragment>& fragments) {
    return dragged(began(kind, id(fragmentID), fragments).value(), Seconds(by), 100_s, fragments);
}

TEST(AudioDrag, MovesAndTrimsInTheRecordingsTime) {
    const std::vector<VideoFragment> fragments{fragment(0, 10, 14, 2)};
    EXPECT_EQ(drag(Kind::Move, 1, 0.5, fragments).audio, (FragmentAudio{1_s, {}, {}, false}));
    EXPECT_EQ(drag(Kind::TrimStart, 1, 0.5, fragments).audio, (FragmentAudio{0_s, SourceTime(11), {}, false}));
    EXPECT_EQ(drag(Kind::TrimEnd, 1, 100, fragments).audio, (FragmentAudio{0_s, {}, SourceTime(100), false}))
        << "the recording ends there";
    EXPECT_EQ(drag(Kind::TrimStart, 1, -100, fragments).audio->start, SourceTime(0));
    EXPECT_NEAR(drag(Kind::TrimStart, 1, 100, fragments).audio->start->value, 13.98, 1e-9);
    EXPECT_FALSE(began(Kind::Move, id(7), fragments));
}

TEST(AudioDrag, BackToTheFullSpanLosesTheRecord) {
    const std::vector<VideoFragment> moved{fragment(0, 0, 4, 1, FragmentAudio{1_s, {}, {}, false})};
    const AudioDragState state = drag(Kind::Move, 1, -1, moved);
    EXPECT_EQ(state.audio, std::nullopt);
    EXPECT_EQ(ended(state, moved)[0].audio, std::nullopt);
    const std::vector<VideoFragment> trimmed{fragment(0, 0, 4, 1, FragmentAudio{0_s, {}, SourceTime(3), false})};
    EXPECT_EQ(drag(Kind::TrimEnd, 1, 1, trimmed).audio, std::nullopt);
    EXPECT_NE(drag(Kind::TrimEnd, 1, 0.5, trimmed).audio, std::nullopt);
}

TEST(AudioDrag, OverWholeNeighboursOfTheSameSourceProposesOneFragment) {
    const FragmentAudio silent{0_s, {}, {}, true};
    const std::vector<VideoFragment> split{fragment(0, 0, 2), fragment(1, 2, 3, 1, silent), fragment(2, 3, 5),
                                           fragment(3, 8, 9)};
    EXPECT_FALSE(drag(Kind::TrimEnd, 1, 0.9, split).merge);
    const AudioDragState one = drag(Kind::TrimEnd, 1, 1, split);
    ASSERT_TRUE(one.merge);
    EXPECT_EQ(one.merge->survivorID, id(1));
    EXPECT_THAT(one.merge->absorbed, testing::ElementsAre(id(2)));
    const auto after = ended(one, split);
    ASSERT_EQ(after.size(), 3u);
    EXPECT_EQ(after[0], (VideoFragment{id(1), 0_s, 3_s, 1, 0, std::nullopt})) << "its sound is whole again";
    EXPECT_EQ(after[2].order, 2);

    EXPECT_EQ(drag(Kind::TrimEnd, 1, 50, split).merge->absorbed.size(), 2u) << "not over another source";
    const AudioDragState back = drag(Kind::TrimStart, 3, -2.5, split);
    EXPECT_THAT(back.merge.value().absorbed, testing::ElementsAre(id(2)));
    EXPECT_EQ(ended(back, split)[1].sourceStart, SourceTime(2));
    EXPECT_EQ(ended(back, split)[1].audio->start, SourceTime(0.5));

    for (const VideoFragment& other :
         {fragment(1, 2.002, 3), fragment(1, 2, 3, 1.5), fragment(1, 2, 3, 1, FragmentAudio{0.5_s, {}, {}, false})})
        EXPECT_FALSE(drag(Kind::TrimEnd, 1, 5, {fragment(0, 0, 2), other}).merge);
}

TEST(NarrationPieceDrag, KeepsToItsShareOfTheTakeAndJoinsWhereItTouches) {
    const std::vector<NarrationPiece> pieces{{id(1), 0_s, 2_s, EditTime(0)}, {id(2), 2_s, 5_s, EditTime(4)}};
    const auto drag = [&](Kind kind, int piece, double by) {
        return dragged(began(kind, id(9), id(piece), pieces).value(), Seconds(by), 5_s);
    };
    EXPECT_EQ(drag(Kind::Move, 2, 1).pieces[1].timelineStart, EditTime(5));
    const NarrationPieceDragState later = drag(Kind::TrimStart, 2, 0.5);
    EXPECT_EQ(later.pieces[1].takeStart, 2.5_s);
    EXPECT_EQ(later.pieces[1].timelineStart, EditTime(4.5)) << "what is left stays in its place";
    EXPECT_EQ(drag(Kind::TrimStart, 2, -1).pieces, pieces) << "the neighbour says that";
    EXPECT_EQ(drag(Kind::TrimEnd, 2, 1).pieces, pieces) << "the take ends there";
    EXPECT_NEAR(drag(Kind::TrimEnd, 1, -9).pieces[0].takeEnd.value, 0.02, 1e-9);

    const NarrationPieceDragState touching = drag(Kind::Move, 2, -2);
    EXPECT_TRUE(touching.joins);
    EXPECT_THAT(ended(touching), testing::ElementsAre(NarrationPiece{id(2), 0_s, 5_s, EditTime(0)}));
    EXPECT_FALSE(drag(Kind::Move, 2, -1.9).joins);
    EXPECT_FALSE(began(Kind::Move, id(9), id(3), pieces));
}

} // namespace
} // namespace morvelin::AudioDrag
