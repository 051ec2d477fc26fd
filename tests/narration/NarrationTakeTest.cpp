// A take's default division, its span, and the fingerprint of the edit it was made for.

#include <gmock/gmock.h>

#include "narration/NarrationTake.h"

namespace morvelin {
namespace {

using testing::ElementsAre;

NarrationTake take(std::vector<TranscriptWord> words = {}) {
    NarrationTake made;
    made.timelineStart = 100_s;
    made.duration = 10_s;
    made.storedID = UUID::parse("00000000-0000-0000-0000-0000000000F0").value();
    if (!words.empty()) made.words = std::move(words);
    return made;
}

TranscriptWord word(double t, double endT) { return {SourceTime(t), SourceTime(endT), "w", 1}; }

std::vector<double> ends(const NarrationTake& take) {
    std::vector<double> all;
    for (const NarrationPiece& piece : take.pieces()) all.push_back(piece.takeEnd.value);
    return all;
}

TEST(DefaultPieces, AreCutInTheMiddleOfPauses) {
    EXPECT_THAT(ends(take()), ElementsAre(10));
    EXPECT_THAT(ends(take({word(0, 1), word(1.4, 2)})), ElementsAre(1.2, 10)) << "0.4 s has no exact difference";
    EXPECT_THAT(ends(take({word(0, 1), word(1.39, 2)})), ElementsAre(10));
    EXPECT_THAT(ends(take({word(5, 6), word(0, 1), word(2, 3)})), ElementsAre(1.5, 4, 10)) << "words out of order";
    EXPECT_THAT(ends(take({word(0, 9), word(11, 12)})), ElementsAre(10)) << "a cut at the end is dropped";
    EXPECT_THAT(ends(take({word(-3, -2), word(2, 3)})), ElementsAre(10)) << "and so is one at the start";
}

TEST(DefaultPieces, LieOneAfterTheOtherAndKeepTheirIds) {
    const NarrationTake made = take({word(0, 1), word(2, 3), word(4, 5)});
    const auto pieces = made.pieces();
    ASSERT_EQ(pieces.size(), 3u);
    EXPECT_EQ(pieces[1].takeStart, 1.5_s);
    EXPECT_EQ(pieces[1].timelineStart, EditTime(101.5));
    EXPECT_EQ(pieces[2].id.text(), "00000000-0000-0000-0000-0000000000F2");
    EXPECT_EQ(made.pieces(), pieces);

    NarrationTake many = take();
    many.storedPieces.emplace(300);
    EXPECT_EQ(many.pieces()[257].id.text(), "00000000-0000-0000-0000-0000000001F1");
}

TEST(TakeSpan, IsThatOfItsArrangement) {
    NarrationTake made = take();
    EXPECT_EQ(made.start(), EditTime(100));
    EXPECT_EQ(made.end(), EditTime(110));
    made.storedPieces = {{{}, 2_s, 4_s, 50_s}, {{}, 9_s, 5_s, 60_s}};
    EXPECT_EQ(made.start(), EditTime(50));
    EXPECT_EQ(made.end(), EditTime(60)) << "a piece of negative length ends where it starts";
    made.arrangement = {{{}, 0_s, 1_s, 7_s}};
    EXPECT_EQ(made.start(), EditTime(7));
    EXPECT_EQ(made.end(), EditTime(8));
    made.arrangement->clear();
    EXPECT_EQ(made.end(), EditTime(110));
}

TEST(EditFingerprint, TellsCuttingsApartToTheMillisecond) {
    VideoFragment a;
    a.sourceStart = 0_s;
    a.sourceEnd = 4.5_s;
    a.speed = 1;
    VideoFragment b = a;
    b.speed = 2;
    // From sha256sum: of nothing, and of "0.000-4.500@1.000|0.000-4.500@2.000".
    EXPECT_EQ(NarrationTake::fingerprintOf({}), "e3b0c44298fc1c14");
    EXPECT_EQ(NarrationTake::fingerprintOf(std::vector{a, b}), "20d93099b6233d48");
    EXPECT_NE(NarrationTake::fingerprintOf(std::vector{b, a}), NarrationTake::fingerprintOf(std::vector{a, b}));

    NarrationTake made = take();
    EXPECT_FALSE(made.isOutdatedFor(std::vector{a})) << "nobody knows";
    made.editFingerprint = NarrationTake::fingerprintOf(std::vector{a});
    a.sourceEnd = 4.5004_s;
    EXPECT_FALSE(made.isOutdatedFor(std::vector{a}));
    a.sourceEnd = 4.501_s;
    EXPECT_TRUE(made.isOutdatedFor(std::vector{a}));
}

} // namespace
} // namespace morvelin
