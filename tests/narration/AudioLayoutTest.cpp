// Where a fragment's moved, trimmed or removed sound plays, and both clocks through it.

#include <random>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "narration/AudioTimes.h"
#include "narration/Coverage.h"
#include "narration/PieceCanvas.h"

namespace morvelin::AudioLayout {
namespace {

UUID id(int number) { return UUID{{static_cast<std::uint8_t>(number)}}; }

VideoFragment fragment(int order, double from, double to, std::optional<FragmentAudio> audio = {}, double speed = 1) {
    return {id(order + 1), SourceTime(from), SourceTime(to), speed, order, audio};
}

FragmentAudio shifted(double by) { return {Seconds(by), {}, {}, false}; }
FragmentAudio trimmed(double from, double to) { return {0_s, SourceTime(from), SourceTime(to), false}; }
FragmentAudio removed() { return {0_s, {}, {}, true}; }

Piece piece(int fragmentID, double from, double to, double source, double speed = 1) {
    return {id(fragmentID), EditTime(from), EditTime(to), SourceTime(source), speed};
}

std::vector<Piece> piecesOf(const std::vector<VideoFragment>& fragments) {
    return pieces(blocks(fragments), FragmentMap(fragments).duration());
}

/// "1:0-2@5" is fragment 1 from 0 s to 2 s of the timeline, playing the recording from 5 s.
std::string text(std::span<const Piece> pieces) {
    std::string all;
    for (const Piece& piece : pieces)
        all += fmt::format("{}{}:{:g}-{:g}@{:g}", all.empty() ? "" : " ",
                           piece.fragmentID ? piece.fragmentID->bytes[0] : 0, piece.timelineStart.value,
                           piece.timelineEnd.value, piece.sourceStart.value);
    return all;
}

TEST(AudioLayoutPieces, FollowEachFragmentsSound) {
    const std::tuple<const char*, std::vector<VideoFragment>, std::string> cases[] = {
        {"nothing", {}, ""},
        {"a fragment without speed has neither sound nor time",
         {fragment(0, 0, 2), fragment(1, 2, 4, {}, 0), fragment(2, 4, 6)},
         "1:0-2@0 3:2-4@4"},
        {"a speed", {fragment(0, 0, 4, {}, 2), fragment(1, 4, 5)}, "1:0-2@0 2:2-3@4"},
        {"removed sound keeps its place", {fragment(0, 0, 2, removed()), fragment(1, 2, 4)}, "2:2-4@2"},
        {"0.019 s of sound", {fragment(0, 0, 2, trimmed(1, 1.019))}, ""},
        {"0.02 s of sound, which has no exact difference", {fragment(0, 0, 2, trimmed(1.1, 1.12))}, "1:1.1-1.12@1.1"},
        {"moved past the end of the video", {fragment(0, 0, 3, shifted(2))}, "1:2-3@0"},
        {"moved before its start", {fragment(0, 0, 3, shifted(-2))}, "1:0-1@2"},
        {"moved over silence", {fragment(0, 0, 3, shifted(2)), fragment(1, 3, 6, removed())}, "1:2-5@0"},
        {"moved over sound in its place, which wins",
         {fragment(0, 0, 3, shifted(2)), fragment(1, 3, 6, trimmed(4, 6))},
         "1:2-4@0 2:4-6@4"},
        {"both moved: the overhang gives way within the other's span",
         {fragment(0, 0, 3, shifted(2)), fragment(1, 3, 6, shifted(1))},
         "1:2-4@0 2:4-6@3"},
        {"moved wholly outside its own span",
         {fragment(0, 0, 1, shifted(4)), fragment(1, 5, 11, removed())},
         "1:4-5@0"},
        {"trimmed outward over a neighbour's silence",
         {fragment(0, 0, 2, trimmed(0, 3)), fragment(1, 5, 7, removed())},
         "1:0-3@0"},
        {"a start before the recording's", {fragment(0, 0, 2, trimmed(-5, 1))}, "1:0-1@0"},
        {"orders out of order", {fragment(1, 2, 4), fragment(0, 0, 2)}, "1:0-2@0 2:2-4@2"},
    };
    for (const auto& [name, fragments, expected] : cases) EXPECT_EQ(text(piecesOf(fragments)), expected) << name;
}

TEST(AudioLayoutPieces, OfOneFragmentJoinWhereTheirSourceGoesOn) {
    for (const auto& [apart, count] : {std::pair(0.00005, 1u), {0.0002, 2u}}) {
        const Block block{piece(1, 0, 4, 0), {}, {EditTime(0), EditTime(2)}, false};
        Block rest = block;
        rest.piece = piece(1, 2, 4, 2 + apart);
        rest.clip = {EditTime(2), EditTime(4)};
        EXPECT_EQ(pieces(std::vector{block, rest}, 4_s).size(), count) << apart;
    }
}

TEST(AudioLayoutPieces, UnfoldToWhatTrimsAndRemovalsHide) {
    const std::vector<VideoFragment> fragments{fragment(0, 0, 2, removed()), fragment(1, 2, 4, trimmed(2.5, 3)),
                                               fragment(2, 4, 6, shifted(1))};
    EXPECT_EQ(text(piecesOf(fragments)), "2:2.5-3@2.5 3:5-6@4");
    EXPECT_EQ(text(unfolded(fragments)), "1:0-2@0 2:2-4@2 3:5-6@4");
    EXPECT_TRUE(hasFragmentAudio(fragments));
    EXPECT_TRUE(hasMovedAudio(fragments));
    EXPECT_FALSE(hasMovedAudio(std::span(fragments).first(2)));
    EXPECT_FALSE(hasFragmentAudio(std::vector{fragment(0, 0, 1)}));
}

TEST(AudioLayoutPlacing, PunchesThePieceOut) {
    const std::vector<Piece> list{piece(1, 0, 10, 100, 2)};
    EXPECT_EQ(text(placing(piece(2, 4, 6, 0), list)), "1:0-4@100 1:6-10@112 2:4-6@0");
    EXPECT_EQ(text(placing(piece(2, 10, 12, 0), list)), "1:0-10@100 2:10-12@0") << "touching is no overlap";
    EXPECT_EQ(text(placing(piece(2, 0.0000005, 10, 0), list)), "2:5e-07-10@0") << "no slivers";
}

TEST(AudioLayoutPlacing, OneByOneGivesWhatTheCanvasGives) {
    std::mt19937_64 engine(7);
    std::uniform_int_distribution tenths(0, 100);
    for (int round = 0; round < 200; ++round) {
        std::vector<Piece> list;
        PieceCanvas canvas;
        for (int i = 1; i <= 12; ++i) {
            const int from = tenths(engine);
            const Piece placed = piece(i, from / 10.0, (from + 1 + tenths(engine) / 3) / 10.0, tenths(engine), 1.5);
            list = placing(placed, list);
            canvas.place(placed);
        }
        std::ranges::sort(list, {}, &Piece::timelineStart);
        ASSERT_EQ(text(canvas.pieces()), text(list)) << "round " << round;
    }
}

TEST(AudioLayoutTimes, GoThroughThePieces) {
    const std::vector<VideoFragment> fragments{fragment(0, 0, 10)};
    const Times times(fragments, std::vector{piece(2, 6, 8, 10, 2), piece(1, 0, 4, 0)});
    const auto seconds = [](const auto& moment) { return moment ? moment->value : -1; };
    EXPECT_EQ(seconds(times.timelineTime(3_s)), 3);
    EXPECT_EQ(seconds(times.timelineTime(5_s)), -1);
    EXPECT_EQ(seconds(times.timelineTime(13_s)), 7.5);
    EXPECT_EQ(seconds(times.timelineTime(SourceTime(4.0000005))), 4) << "held at the piece's end";
    EXPECT_EQ(seconds(times.sourceTime(7_s)), 12);
    EXPECT_EQ(seconds(times.sourceTime(5_s)), -1);
    for (const auto& [t, s] : {std::pair(4.5, 4.0), {5.0, 4.0}, {5.5, 10.0}, {9.0, 14.0}, {1.0, 1.0}})
        EXPECT_EQ(seconds(times.nearestSourceTime(EditTime(t))), s) << t;
    EXPECT_EQ(times.sourceSpan(3_s, 12_s), (EditRange{EditTime(3), EditTime(7)}));
    EXPECT_FALSE(times.sourceSpan(5_s, 9_s));

    const Times silent(fragments, std::vector<Piece>());
    EXPECT_FALSE(silent.timelineTime(1_s) || silent.nearestSourceTime(1_s)) << "an empty list is silence";
    const Times unlaid(fragments, std::nullopt);
    EXPECT_EQ(seconds(unlaid.timelineTime(1_s)), 1);
    EXPECT_EQ(unlaid.sourceSpan(9_s, 12_s), (EditRange{EditTime(9), EditTime(10)})) << "clipped to the fragment";
}

TEST(AudioLayoutTimes, FindTheFirstHolderAsALinearSearchDoes) {
    std::mt19937_64 engine(11);
    std::uniform_int_distribution tenths(0, 60);
    for (int round = 0; round < 200; ++round) {
        std::vector<Piece> list;
        for (int i = 0; i < 10; ++i) list.push_back(piece(i, i, i + 1, tenths(engine) / 10.0, tenths(engine) / 20.0));
        const SourceIndex index(list);
        for (int k = 0; k < 20; ++k) {
            const SourceTime s(tenths(engine) / 7.0);
            const auto first = std::ranges::find_if(
                list, [&](const Piece& each) { return each.sourceStart <= s && s <= each.sourceEnd(); });
            const auto expected = first == list.end() ? std::nullopt : std::optional<std::size_t>(first - list.begin());
            ASSERT_EQ(index.holder(s, 0), expected) << round;
        }
    }
}

TEST(Coverage, IsTheUnionOfItsSpans) {
    Coverage coverage;
    for (const auto& [from, to] : {std::pair(4.0, 5.0), {0.0, 1.0}, {1.0000005, 2.0}, {4.5, 6.0}, {3.9, 4.1}})
        coverage.add({EditTime(from), EditTime(to)});
    EXPECT_THAT(coverage.spans(),
                testing::ElementsAre(EditRange{EditTime(0), EditTime(2)}, EditRange{EditTime(3.9), EditTime(6)}));
    EXPECT_TRUE(coverage.holds(EditTime(2.0000005)));
    EXPECT_FALSE(coverage.holds(EditTime(3)));
    EXPECT_EQ(text(coverage.leftOf(piece(1, 1, 7, 0, 2))), "1:2-3.9@2 1:6-7@10");
}

} // namespace
} // namespace morvelin::AudioLayout
