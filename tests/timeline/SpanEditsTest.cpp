#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EditTracks.h"
#include "timeline/FragmentStretch.h"
#include "timeline/SpanEdits.h"

namespace morvelin {
namespace {

using test::fragment;
using test::idOf;
using test::ownedKey;
using test::ramp;
using test::written;
using testing::ElementsAre;
using Reason = SpanRefusal::Reason;

class SpanEdits : public testing::Test {
protected:
    SpanEdits() {
        tracks.fragments = {fragment(0, 0, 10), fragment(1, 20, 30)};
        tracks.fragments[0].id = idOf(1);
        tracks.fragments[1].id = idOf(2);
        tracks.camera = {{ramp(1, 0, 0, 1)}, {ownedKey(1, 0, 0.5)}};
    }

    /// "1:0-4 2:20-30" for the fragments by id; a "?" for a fresh one.
    static std::string shown(const TimelineTracks& tracks) {
        std::string text;
        for (const VideoFragment& each : tracks.fragments) {
            char part[64];
            std::snprintf(part, sizeof part, "%s%s:%.4g-%.4g", text.empty() ? "" : " ",
                          each.id == idOf(1) ? "1" : (each.id == idOf(2) ? "2" : "?"), each.sourceStart.value,
                          each.sourceEnd.value);
            text += part;
            if (each.speed != 1) text.append("x").append(std::to_string(static_cast<int>(each.speed)));
        }
        return text;
    }

    /// The tracks after a cut that must be possible.
    TimelineTracks afterCut(double from, double to) {
        auto edit = cut(tracks, EditTime(from), EditTime(to), ids);
        EXPECT_TRUE(edit) << from << "–" << to;
        return edit ? std::move(edit->tracks) : TimelineTracks{};
    }

    TimelineTracks tracks;
    SeededIdSource ids{1};
};

TEST_F(SpanEdits, CutLeavesWholePiecesWithTheirIds) {
    struct Case {
        double from, to;
        const char* left;
        double removed;
    };
    for (const Case& c : {Case{4, 6, "1:0-4 ?:6-10 2:20-30", 2},
                          {0, 4, "1:4-10 2:20-30", 4},
                          {0.04, 4, "1:4-10 2:20-30", 4}, // no sliver is left in front
                          {7, 10, "1:0-7 2:20-30", 3},
                          {7, 12, "1:0-7 2:22-30", 5},
                          {7, 10.03, "1:0-7 2:20-30", 3},
                          {10, 20, "1:0-10", 10},
                          {0.06, 20.0004, "1:0-0.06", 19.94}}) {
        const auto edit = cut(tracks, EditTime(c.from), EditTime(c.to), ids);
        ASSERT_TRUE(edit) << c.from;
        EXPECT_EQ(shown(edit->tracks), c.left);
        EXPECT_NEAR(edit->removed.value, c.removed, 1e-9) << c.left;
        EXPECT_NEAR(edit->tracks.duration().value, 20 - c.removed, 1e-9) << c.left;
    }
}

TEST_F(SpanEdits, RefusesWhatCannotBe) {
    const auto reasonOf = [](const auto& result) {
        return result ? std::nullopt : std::optional(result.error().reason);
    };
    struct Case {
        double from, to;
        Reason cut, speed;
    };
    for (const Case& c : {Case{-0.01, 3, Reason::OutsideTimeline, Reason::OutsideTimeline},
                          {3, 20.01, Reason::OutsideTimeline, Reason::OutsideTimeline},
                          {5, 5.04, Reason::SpanTooShort, Reason::SpanTooShort},
                          {9.97, 10.03, Reason::SpanTooShort, Reason::SpanTooShort},
                          {6, 4, Reason::SpanTooShort, Reason::SpanTooShort}}) {
        EXPECT_EQ(reasonOf(cut(tracks, EditTime(c.from), EditTime(c.to), ids)), c.cut) << c.from;
        EXPECT_EQ(reasonOf(setSpeed(tracks, EditTime(c.from), EditTime(c.to), 2, ids)), c.speed) << c.from;
    }
    EXPECT_EQ(reasonOf(cut(tracks, EditTime(0.05), EditTime(19.95), ids)), Reason::WouldEmptyTimeline);
    EXPECT_EQ(reasonOf(trim(tracks, EditTime(8), EditTime(3), ids)), Reason::WouldEmptyTimeline);
    EXPECT_EQ(reasonOf(cut(TimelineTracks{}, EditTime(0), EditTime(1), ids)), Reason::EmptyTimeline);
    TimelineTracks slow;
    slow.fragments = {fragment(0, 0, 1, 0.2)}; // too little of the recording is left in front to stand alone
    EXPECT_EQ(reasonOf(cut(slow, EditTime(0.2), EditTime(5), ids)), Reason::WouldEmptyTimeline);
    for (const auto& [speed, isAllowed] :
         {std::pair{0.1, false}, {0.2, true}, {30.0, true}, {40.0, true}, {41.0, false}})
        EXPECT_EQ(reasonOf(setSpeed(tracks, EditTime(2), EditTime(8), speed, ids)),
                  isAllowed ? std::nullopt : std::optional(Reason::SpeedOutOfRange))
            << speed;
}

TEST_F(SpanEdits, TrimKeepsWhatLiesBetween) {
    struct Case {
        double start, end;
        const char* left;
    };
    for (const Case& c : {Case{0.04, 20, "1:0-10 2:20-30"},
                          {0.06, 20, "1:0.06-10 2:20-30"},
                          {0, 19.95, "1:0-10 2:20-30"},
                          {0, 19.9, "1:0-10 2:20-29.9"},
                          {4, 12, "1:4-10 2:20-22"}}) {
        const auto edit = trim(tracks, EditTime(c.start), EditTime(c.end), ids);
        ASSERT_TRUE(edit) << c.left;
        EXPECT_EQ(shown(edit->tracks), c.left);
    }
}

TEST_F(SpanEdits, SpeedSplitsAtBothEndsAndCarriesTheCues) {
    tracks.camera.zoom.push_back(ramp(2, 6, 1, 2));
    tracks.camera.position.push_back(ownedKey(2, 9, 0.8, 2));
    tracks.masks = {{idOf(1), EditTime(5), EditTime(15), {}, 24}};
    const auto edit = setSpeed(tracks, EditTime(4), EditTime(12), 4, ids);
    ASSERT_TRUE(edit);
    EXPECT_EQ(shown(edit->tracks), "1:0-4 ?:4-10x4 2:20-22x4 ?:22-30");
    EXPECT_NEAR(edit->removed.value, 6, 1e-9);
    EXPECT_EQ(written(edit->tracks.camera.zoom), "0+0>1 4.5+0.25>2");
    EXPECT_EQ(written(edit->tracks.camera.position), "0:0.5 5.25:0.8/2");
    EXPECT_NEAR(edit->tracks.masks[0].startTime.value, 4.25, 1e-9);
    EXPECT_NEAR(edit->tracks.masks[0].endTime.value, 9, 1e-9);

    const auto back = setFragmentSpeed(tracks, idOf(2), 2);
    ASSERT_TRUE(back);
    EXPECT_NEAR(back->tracks.duration().value, 15, 1e-9);
}

TEST_F(SpanEdits, CuesStayOnTheirFootage) {
    const std::vector<std::pair<double, double>> spans{{1, 3}, {1, 5}, {4.5, 5.5}, {4, 6},
                                                       {5, 8}, {6, 8}, {3, 8},     {6, 6}};
    for (const auto& [start, end] : spans)
        tracks.focuses.push_back({idOf(0), EditTime(start), EditTime(end), {}, 0.5_s, {}, {}});
    std::vector<std::pair<double, double>> left;
    for (const FocusKeyframe& key : afterCut(4, 6).focuses) left.emplace_back(key.startTime.value, key.endTime.value);
    using P = std::pair<double, double>;
    EXPECT_THAT(left, ElementsAre(P{1, 3}, P{1, 4}, P{4, 6}, P{4, 6}, P{3, 6}, P{4, 4}));
}

TEST_F(SpanEdits, ZoomsAndPositionsMeetAtTheSeam) {
    struct Case {
        const char* what;
        double from, to;
        std::vector<ZoomKeyframe> zooms;
        std::vector<PositionKeyframe> positions;
        const char* zoomsAfter;
        const char* positionsAfter;
    };
    const std::vector<PositionKeyframe> pair{ownedKey(1, 0, 0.5), ownedKey(2, 3, 0.8, 2), ownedKey(3, 8, 0.8, 2)};
    const std::vector<ZoomKeyframe> inAndOut{ramp(1, 0, 0, 1), ramp(2, 2, 1, 2), ramp(3, 8, 1, 1)};
    for (const Case& c : {
             Case{"inside a hold", 4, 6, inAndOut, pair, "0+0>1 2+1>2 6+1>1", "0:0.5 3:0.8/2 6:0.8/2"},
             {"a ramp that runs into the cut arrives at the seam", 2.5, 4, inAndOut, pair, "0+0>1 2+0.5>2 6.5+1>1",
              "0:0.5 2.5:0.8/2 6.5:0.8/2"},
             {"the rest of a ramp begins at the seam", 1, 2.5, inAndOut, pair, "0+0>1 1+0.5>2 6.5+1>1",
              "0:0.5 1.5:0.8/2 6.5:0.8/2"},
             {"what follows is framed as it was", 1, 5, inAndOut, pair, "0+0>1 1+0.05>2 4+1>1",
              "0:0.5 1:0.8/2 4:0.8/2"},
             {"a zoom wholly in the cut leaves nothing", 1, 9.5, inAndOut, pair, "0+0>1", "0:0.5"},
             {"the picture opens on the level that it was at", 0, 5, inAndOut, pair, "0+0>2 3+1>1", "0:0.8/2 3:0.8/2"},
             {"and within a ramp on the level before", 0, 2.5, inAndOut, pair, "0+0>1 0+0.5>2 5.5+1>1",
              "0:0.5 0.5:0.8/2 5.5:0.8/2"},
             {"or on a key that stands just there", 0, 3, inAndOut, pair, "0+0>2 5+1>1", "0:0.8/2 5:0.8/2"},
             {"what ended in the cut holds up to the end", 6, 20, inAndOut, pair, "0+0>1 2+1>2",
              "0:0.5 3:0.8/2 6:0.8/2"},
             {"of the views in the cut the first and the last",
              3.5,
              6,
              {ramp(1, 0, 0, 2)},
              {ownedKey(1, 0, 0.5), ownedKey(2, 3, 0.8), ownedKey(3, 4, 0.3), ownedKey(4, 4.5, 0.6),
               ownedKey(5, 5, 0.4), ownedKey(6, 9, 0.2)},
              "0+0>2",
              "0:0.5 3:0.8 3.5:0.3 3.55:0.4 6.5:0.2"},
             {"from one hold into another",
              5,
              11,
              {ramp(1, 0, 0, 1), ramp(2, 2, 1, 2), ramp(3, 8, 1, 3)},
              {ownedKey(1, 0, 0.5), ownedKey(2, 3, 0.8, 2), ownedKey(3, 8, 0.8, 2), ownedKey(4, 9, 0.2, 3),
               ownedKey(5, 15, 0.2, 3)},
              "0+0>1 2+1>2 5+0.05>3",
              "0:0.5 3:0.8/2 5:0.8/2 5.05:0.2/3 9:0.2/3"},
         }) {
        tracks.camera = {c.zooms, c.positions};
        const TimelineTracks after = afterCut(c.from, c.to);
        EXPECT_EQ(written(after.camera.zoom), c.zoomsAfter) << c.what;
        EXPECT_EQ(written(after.camera.position), c.positionsAfter) << c.what;
    }
}

TEST_F(SpanEdits, AnEdgeRemovesFootageAndBringsItBack) {
    tracks.camera.position.push_back(ownedKey(2, 12, 0.8));
    tracks.masks = {{idOf(1), EditTime(2), EditTime(10), {}, 24}, {idOf(2), EditTime(10), EditTime(15), {}, 24}};
    struct Case {
        const char* what;
        int id;
        FragmentStretchSide side;
        double to;
        const char* left;
        double keyAt;
    };
    using enum FragmentStretchSide;
    for (const Case& c : {Case{"inwards", 1, Right, 7, "1:0-7 2:20-30", 9},
                          {"inwards from the left", 2, Left, 11, "1:0-10 2:21-30", 11},
                          {"outwards", 1, Right, 14, "1:0-14 2:20-30", 16},
                          {"up to what another fragment shows", 1, Right, 25, "1:0-20 2:20-30", 22},
                          {"outwards to the left", 2, Left, 7, "1:0-10 2:17-30", 15},
                          {"up to the recording's end", 2, Right, 99, "1:0-10 2:20-40", 12},
                          {"never past its start", 1, Left, -5, "1:0-10 2:20-30", 12},
                          {"a piece stays", 1, Right, -1, "1:0-0.05 2:20-30", 2.05}}) {
        const auto edit = stretchFragment(tracks, idOf(c.id), c.side, EditTime(c.to), 40_s);
        ASSERT_TRUE(edit);
        EXPECT_EQ(shown(edit->tracks), c.left) << c.what;
        EXPECT_NEAR(edit->tracks.camera.position.back().time.value, c.keyAt, 1e-9) << c.what;
        EXPECT_NEAR(edit->removed.value, 20 - edit->tracks.duration().value, 1e-9) << c.what;

        const auto shown = stretchPreview(tracks.fragments, idOf(c.id), c.side, EditTime(c.to), 40_s);
        ASSERT_TRUE(shown);
        EXPECT_EQ(shown->frozenTransformTime, shown->oldBoundaryTime) << c.what;
        const Seconds moved = shown->newBoundaryTime - shown->oldBoundaryTime;
        EXPECT_NEAR(moved.value, edit->removed.value * (c.side == Left ? 1 : -1), 1e-9) << c.what;
        EXPECT_NEAR(shown->deltaSeconds.value, std::abs(edit->removed.value), 1e-9) << c.what;
        EXPECT_EQ(shown->isRemoval, edit->removed > 0_s) << c.what;
    }
    const auto longer = stretchFragment(tracks, idOf(1), Right, EditTime(13), 40_s);
    EXPECT_EQ(longer->tracks.masks[0].endTime, EditTime(13)) << "a mask hides what comes back beside it";
    EXPECT_EQ(longer->tracks.masks[1].startTime, EditTime(10));
    EXPECT_FALSE(stretchFragment(tracks, idOf(9), Left, EditTime(1), 40_s));
    EXPECT_FALSE(stretchPreview(tracks.fragments, idOf(9), Left, EditTime(1), 40_s));
}

} // namespace
} // namespace morvelin
