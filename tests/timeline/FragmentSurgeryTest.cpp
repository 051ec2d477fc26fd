#include <gtest/gtest.h>

#include "EditTracks.h"
#include "timeline/FragmentSurgery.h"

namespace morvelin {
namespace {

using test::fragment;
using test::idOf;

TEST(FragmentSurgery, SplitsClearOfTheEdgesOnBothClocks) {
    // On the timeline: 0–10 s, 10–14 s at speed 2, 14–34 s at speed 0.2, and one that holds no moment.
    const std::vector<VideoFragment> fragments{fragment(2, 30, 34, 0.2), fragment(0, 0, 10), fragment(1, 10, 18, 2),
                                               fragment(3, 40, 50, 0)};
    struct Case {
        double time;
        bool canSplit, splits;
    };
    for (const Case& c : {Case{0.04, false, false},
                          {0.05, false, false},
                          {0.06, true, true},
                          {9.94, true, true},
                          {9.95, false, false},
                          {9.96, false, false},
                          {10.04, false, false}, // 0.08 s of the recording, but 0.04 s of the edit
                          {10.06, true, true},
                          {14.06, true, false}, // 0.012 s of the recording
                          {14.24, true, false},
                          {14.25, true, false},
                          {14.26, true, true},
                          {34, false, false},
                          {35, false, false},
                          {-1, false, false}}) {
        SeededIdSource ids(1);
        EXPECT_EQ(FragmentSurgery::canSplit(fragments, EditTime(c.time)), c.canSplit) << c.time;
        EXPECT_EQ(FragmentSurgery::split(fragments, EditTime(c.time), ids).has_value(), c.splits) << c.time;
    }
}

TEST(FragmentSurgery, GivesTheRightPieceANewIdAndTheListItsOrder) {
    std::vector<VideoFragment> fragments{fragment(9, 20, 30), fragment(4, 0, 8, 2)};
    fragments[0].id = idOf(1);
    fragments[1].id = idOf(2);
    SeededIdSource ids(1);
    const auto split = FragmentSurgery::split(fragments, EditTime(1), ids);
    ASSERT_TRUE(split);
    const auto piece = [](UUID id, std::int64_t order, double start, double end, double speed) {
        VideoFragment expected = fragment(order, start, end, speed);
        expected.id = id;
        return expected;
    };
    EXPECT_EQ(split->fragments, (std::vector{piece(idOf(2), 0, 0, 2, 2), piece(split->rightID, 1, 2, 8, 2),
                                             piece(idOf(1), 2, 20, 30, 1)}));
    EXPECT_NE(split->rightID, idOf(1));
    EXPECT_NE(split->rightID, idOf(2));
}

TEST(FragmentSurgery, DividesTheSoundSoThatTheSameIsHeard) {
    struct Case {
        const char* what;
        std::optional<double> start, end;
        std::optional<double> leftStart, leftEnd, rightStart, rightEnd;
    };
    for (const Case& c : {Case{"plain", {}, {}, {}, {}, {}, {}},
                          {"trimmed around the cut", 2, 8, 2, {}, {}, 8},
                          {"ends in the left piece: the right one stays silent", {}, 3, {}, 3, {}, 3},
                          {"starts in the right piece: the left one stays silent", 7, {}, 7, {}, 7, {}},
                          {"ends at the cut", 1, 5, 1, {}, {}, 5},
                          {"reaches past both edges", -1, 12, -1, {}, {}, 12}}) {
        const auto at = [](std::optional<double> t) { return t ? std::optional(SourceTime(*t)) : std::nullopt; };
        VideoFragment whole = fragment(0, 0, 10);
        whole.audio = FragmentAudio{0.5_s, at(c.start), at(c.end), true};
        SeededIdSource ids(1);
        const auto split = FragmentSurgery::split({whole}, EditTime(5), ids);
        ASSERT_TRUE(split);
        EXPECT_EQ(split->fragments[0].audio, (FragmentAudio{0.5_s, at(c.leftStart), at(c.leftEnd), true})) << c.what;
        EXPECT_EQ(split->fragments[1].audio, (FragmentAudio{0.5_s, at(c.rightStart), at(c.rightEnd), true})) << c.what;
    }
}

} // namespace
} // namespace morvelin
