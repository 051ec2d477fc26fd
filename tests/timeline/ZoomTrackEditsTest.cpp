#include <gtest/gtest.h>

#include "EditTracks.h"
#include "timeline/ZoomPositionKeys.h"
#include "timeline/ZoomSeamRoll.h"

namespace morvelin {
namespace {

using namespace ZoomTrackEdits;
using test::idOf;
using test::ownedKey;
using test::ramp;
using test::written;
using Reason = Refusal::Reason;

/// Zooms 2 and 3 hold at x 0.8 and 0.2; zoom 4 goes back out; 20 s.
class ZoomTrackEditing : public testing::Test {
protected:
    template <class Value>
    static std::optional<Reason> reasonOf(const Result<Value, Refusal>& result) {
        return result ? std::nullopt : std::optional(result.error().reason);
    }

    ZoomTracks tracks{{ramp(1, 0, 0, 1), ramp(2, 2, 1, 2), ramp(3, 6, 1, 3), ramp(4, 12, 1, 1)},
                      {ownedKey(1, 0, 0.5), ownedKey(2, 3, 0.8, 2), ownedKey(3, 6, 0.8, 2), ownedKey(4, 7, 0.2, 3),
                       ownedKey(5, 12, 0.2, 3)}};
    EditTime end{20};
    SeededIdSource ids{1};
};

TEST_F(ZoomTrackEditing, ProposesAPlaceWithRoomForRampAndHold) {
    struct Case {
        const char* what;
        double at, hold, ramp;
        std::optional<Proposal> place;
    };
    const auto place = [](double start, double holdEnd, double placeEnd, bool zoomsOut) {
        return Proposal{EditTime(start), EditTime(holdEnd), EditTime(placeEnd), zoomsOut};
    };
    for (const Case& c : {Case{"inside a ramp", 2.5, 1, 1, {}},
                          {"inside a zoom", 4, 1, 1, {}},
                          {"on a ramp's end, zoomed out", 13, 2, 1, place(13, 16, 17, true)},
                          {"before the first zoom", 0.3, 0.3, 0.3, place(0.3, 0.9, 1.2, true)},
                          {"room for the ramp back out, to the bit", 0.5, 0.5, 0.5, place(0.5, 1.5, 2, true)},
                          {"none for it", 0.6, 0.5, 0.5, place(0.6, 2, 2, false)},
                          {"moved forward, to leave room for the hold", 1.8, 1, 0.5, place(0.5, 2, 2, false)},
                          {"no room for the hold: the ramp alone", 1.8, 3, 0.5, place(1.5, 2, 2, false)},
                          {"no room for the ramp", 1, 1, 2.1, {}},
                          {"up to the end", 19.5, 1, 1, place(18, 20, 20, false)}}) {
        const auto found = proposeZoom(tracks.zoom, EditTime(c.at), end, Seconds(c.hold), Seconds(c.ramp));
        ASSERT_EQ(found.has_value(), c.place.has_value()) << c.what;
        if (!found) continue;
        EXPECT_NEAR(found->start.value, c.place->start.value, 1e-6) << c.what;
        EXPECT_NEAR(found->holdEnd.value, c.place->holdEnd.value, 1e-6) << c.what;
        EXPECT_NEAR(found->end.value, c.place->end.value, 1e-6) << c.what;
        EXPECT_EQ(found->zoomsOut, c.place->zoomsOut) << c.what;
    }
    tracks.zoom = {ramp(1, 0, 0, 1.02)};
    EXPECT_TRUE(proposeZoom(tracks.zoom, EditTime(3), end, 1_s, 1_s)) << "counts as zoomed out";
    tracks.zoom = {ramp(1, 0, 0, 1.021)};
    EXPECT_FALSE(proposeZoom(tracks.zoom, EditTime(3), end, 1_s, 1_s));
}

TEST_F(ZoomTrackEditing, InsertsWhereTheTrackIsFree) {
    struct Case {
        const char* what;
        double at, transition;
        const char* zooms;
    };
    for (const Case& c : {Case{"between", 4, 0.5, "0+0>1 2+1>2 4+0.5>5 6+1>3 12+1>1"},
                          {"touching on both sides", 3, 3, "0+0>1 2+1>2 3+3>5 6+1>3 12+1>1"},
                          {"in another's place", 6, 2, "0+0>1 2+1>2 6+2>5 12+1>1"},
                          {"given back rounded", 6.0004, 2, "0+0>1 2+1>2 6+2>5 12+1>1"},
                          {"fitted to a span worded in hundredths", 2.996, 1, "0+0>1 2+1>2 3+1>5 6+1>3 12+1>1"},
                          {"in place of the opening key", 0, 0.6, "0+0.6>5 2+1>2 6+1>3 12+1>1"},
                          {"never shorter than a ramp can be", 15, 0, "0+0>1 2+1>2 6+1>3 12+1>1 15+0.05>5"},
                          {"nor longer than the timeline", 15, 1e300, "0+0>1 2+1>2 6+1>3 12+1>1 15+20>5"}}) {
        const auto made = insertZoom(tracks, {EditTime(c.at), 5, Seconds(c.transition), {}, {}}, end, ids);
        ASSERT_TRUE(made) << c.what;
        EXPECT_EQ(written(made->tracks.zoom).substr(0, 60), c.zooms) << c.what;
    }
}

TEST_F(ZoomTrackEditing, RefusesToOverlapAndNamesTheFreeSpan) {
    struct Case {
        double at, transition, from;
        std::optional<double> until;
    };
    for (const Case& c : {Case{2.5, 0.5, 3, 6}, {5.5, 1, 3, 6}, {1.5, 0.6, 0, 2}, {12.5, 1, 13, {}}}) {
        const auto made = insertZoom(tracks, {EditTime(c.at), 2, Seconds(c.transition), {}, {}}, end, ids);
        ASSERT_EQ(reasonOf(made), Reason::Overlap) << c.at;
        const FreeSpan free = made.error().free;
        EXPECT_EQ(free.from, EditTime(c.from)) << c.at;
        EXPECT_EQ(free.until, c.until ? std::optional(EditTime(*c.until)) : std::nullopt) << c.at;
        EXPECT_NEAR(made.error().end.value, c.at + c.transition, 1e-9);
    }
    for (const auto& [factor, isAllowed] : {std::pair{0.99, false}, {1.0, true}, {10.0, true}, {10.1, false}})
        EXPECT_EQ(insertZoom(tracks, {EditTime(15), factor, 1_s, {}, {}}, end, ids).has_value(), isAllowed) << factor;
    EXPECT_EQ(reasonOf(insertZoom(tracks, {EditTime(20.1), 2, 1_s, {}, {}}, end, ids)), Reason::OutsideTimeline);
}

TEST_F(ZoomTrackEditing, AnAimedZoomHoldsItsOwnView) {
    const auto aimed = [&](double at, double factor, std::optional<NormalizedPoint> aim) {
        auto made = insertZoom(tracks, {EditTime(at), factor, 0.5_s, ZoomTransitionType::Smooth, aim}, end, ids);
        if (!made) return std::string("refused");
        for (PositionKeyframe& key : made->tracks.position)
            if (key.zoomKeyframeID == made->id) key.zoomKeyframeID = idOf(99);
        return written(made->tracks.position);
    };
    const NormalizedPoint spot{0.4, 0.5};
    EXPECT_EQ(aimed(4, 5, spot), "0:0.5 3:0.8/2 4:0.8/2 4.5:0.4/99 6:0.4/99 7:0.2/3 12:0.2/3") << "inside a hold";
    EXPECT_EQ(aimed(6, 5, spot), "0:0.5 3:0.8/2 6:0.8/2 6.5:0.4/99 12:0.4/99") << "in another's place";
    EXPECT_EQ(aimed(6, 5, {}), "0:0.5 3:0.8/2 6:0.8/2 7:0.2/99 12:0.2/99") << "unaimed, the track stays as it stands";
    EXPECT_EQ(aimed(6, 1, spot), "0:0.5 3:0.8/2 6:0.8/2 7:0.2 12:0.2") << "a zoom-out owns no keys";
    EXPECT_EQ(aimed(15, 5, spot), "0:0.5 3:0.8/2 6:0.8/2 7:0.2/3 12:0.2/3 15.5:0.4/99 20:0.4/99");
}

TEST_F(ZoomTrackEditing, ChangesOnlyWhatIsGiven) {
    struct Case {
        const char* what;
        int id;
        ZoomChange change;
        const char* zooms;
        const char* positions;
    };
    const char* same = "0:0.5 3:0.8/2 6:0.8/2 7:0.2/3 12:0.2/3";
    for (const Case& c : {
             Case{"its level", 2, {{}, {}, 4, {}, {}}, "0+0>1 2+1>4 6+1>3 12+1>1", same},
             {"the opening level", 1, {EditTime(0), {}, 2, {}, {}}, "0+0>2 2+1>2 6+1>3 12+1>1", same},
             {"earlier, and the hold before with it",
              3,
              {EditTime(5), {}, {}, {}, {}},
              "0+0>1 2+1>2 5+1>3 12+1>1",
              "0:0.5 3:0.8/2 5:0.8/2 6:0.2/3 11:0.2/3"},
             {"later, no further than its hold",
              3,
              {EditTime(8), {}, {}, {}, {}},
              "0+0>1 2+1>2 8+1>3 12+1>1",
              "0:0.5 3:0.8/2 6:0.8/2 9:0.2/3 12:0.2/3"},
             {"longer", 3, {{}, 2_s, {}, {}, {}}, "0+0>1 2+1>2 6+2>3 12+1>1", "0:0.5 3:0.8/2 6:0.8/2 8:0.2/3 12:0.2/3"},
             {"shorter than a ramp can be",
              3,
              {{}, 0.01_s, {}, {}, {}},
              "0+0>1 2+1>2 6+0.05>3 12+1>1",
              "0:0.5 3:0.8/2 6:0.8/2 6.05:0.2/3 12:0.2/3"},
             {"its aim",
              3,
              {{}, {}, {}, {}, NormalizedPoint{0.1, 0.1}},
              "0+0>1 2+1>2 6+1>3 12+1>1",
              "0:0.5 3:0.8/2 6:0.8/2 7:0.1/3 12:0.1/3"},
             {"its aim, where it owned no keys",
              4,
              {{}, {}, 2, {}, NormalizedPoint{0.1, 0.1}},
              "0+0>1 2+1>2 6+1>3 12+1>2",
              "0:0.5 3:0.8/2 6:0.8/2 7:0.2/3 12:0.2/3 13:0.1/4"},
             {"out: its keys are free",
              3,
              {{}, {}, 1, {}, {}},
              "0+0>1 2+1>2 6+1>1 12+1>1",
              "0:0.5 3:0.8/2 6:0.8/2 7:0.2 12:0.2"},
         }) {
        const auto changed = updateZoom(tracks, idOf(c.id), c.change, end, ids);
        ASSERT_TRUE(changed) << c.what;
        EXPECT_EQ(written(changed->zoom), c.zooms) << c.what;
        EXPECT_EQ(written(changed->position), c.positions) << c.what;
    }
    EXPECT_EQ(reasonOf(updateZoom(tracks, idOf(1), {EditTime(1), {}, {}, {}, {}}, end, ids)), Reason::StartZoomIsFixed);
    EXPECT_EQ(reasonOf(updateZoom(tracks, idOf(1), {{}, 1_s, {}, {}, {}}, end, ids)), Reason::StartZoomIsFixed);
    EXPECT_EQ(reasonOf(updateZoom(tracks, idOf(3), {{}, 6.1_s, {}, {}, {}}, end, ids)), Reason::Overlap);
    EXPECT_EQ(reasonOf(updateZoom(tracks, idOf(3), {EditTime(2.5), {}, {}, {}, {}}, end, ids)), Reason::Overlap);
    EXPECT_EQ(reasonOf(updateZoom(tracks, idOf(9), {}, end, ids)), Reason::UnknownZoom);
}

TEST_F(ZoomTrackEditing, ARemovedZoomLeavesTheOneBeforeHolding) {
    const auto left = removeZoom(tracks, idOf(3), end);
    ASSERT_TRUE(left);
    EXPECT_EQ(written(left->zoom), "0+0>1 2+1>2 12+1>1");
    EXPECT_EQ(written(left->position), "0:0.5 3:0.8/2 12:0.8/2");
    EXPECT_EQ(reasonOf(removeZoom(tracks, idOf(1), end)), Reason::FirstZoomCannotBeDeleted);
    EXPECT_EQ(reasonOf(removeZoom(tracks, idOf(9), end)), Reason::UnknownZoom);

    tracks.position.push_back(ownedKey(8, 15, 0.3));
    const ZoomTracks still = withoutZooms(tracks, ids);
    EXPECT_EQ(written(still.zoom), "0+0>1");
    EXPECT_EQ(written(still.position), "0:0.5 15:0.3") << "keys set by hand stay";
}

TEST_F(ZoomTrackEditing, ASeamStopsAgainstRampsAndMergesWhatItCrosses) {
    struct Case {
        const char* what;
        int id;
        double to, seam;
        const char* zooms;
        const char* positions;
        std::vector<UUID> absorbed;
        std::optional<UUID> survivor;
    };
    for (const Case& c : {
             Case{"earlier", 3, 5, 5, "0+0>1 2+1>2 5+1>3 12+1>1", "0:0.5 3:0.8/2 5:0.8/2 6:0.2/3 12:0.2/3", {}, {}},
             {"later", 3, 9, 9, "0+0>1 2+1>2 9+1>3 12+1>1", "0:0.5 3:0.8/2 9:0.8/2 10:0.2/3 12:0.2/3", {}, {}},
             {"against the ramp before",
              3,
              2.5,
              3,
              "0+0>1 2+1>2 3+1>3 12+1>1",
              "0:0.5 3:0.8/2 4:0.2/3 12:0.2/3",
              {},
              {}},
             {"to the very start of the zoom before",
              3,
              2,
              3,
              "0+0>1 2+1>2 3+1>3 12+1>1",
              "0:0.5 3:0.8/2 4:0.2/3 12:0.2/3",
              {},
              {}},
             {"against the ramp behind",
              3,
              11.5,
              11,
              "0+0>1 2+1>2 11+1>3 12+1>1",
              "0:0.5 3:0.8/2 11:0.8/2 12:0.2/3",
              {},
              {}},
             {"back across a whole zoom",
              3,
              1.5,
              1.5,
              "0+0>1 1.5+1>3 12+1>1",
              "0:0.5 2.5:0.2/3 12:0.2/3",
              {idOf(2)},
              idOf(3)},
             {"forward across its own", 3, 13, 13, "0+0>1 2+1>2 13+1>1", "0:0.5 3:0.8/2 13:0.8/2", {idOf(3)}, idOf(2)},
             {"the last one never vanishes",
              4,
              25,
              19,
              "0+0>1 2+1>2 6+1>3 19+1>1",
              "0:0.5 3:0.8/2 6:0.8/2 7:0.2/3 19:0.2/3",
              {},
              {}},
             {"back across two", 4, 1, 1, "0+0>1 1+1>1", "0:0.5", {idOf(3), idOf(2)}, idOf(4)},
             {"forward across two", 2, 14, 14, "0+0>1 14+1>1", "0:0.5", {idOf(2), idOf(3)}, idOf(1)},
             {"the first one never vanishes",
              2,
              -3,
              0,
              "0+0>1 0+1>2 6+1>3 12+1>1",
              "0:0.5 1:0.8/2 6:0.8/2 7:0.2/3 12:0.2/3",
              {},
              {}},
         }) {
        const auto roll = rollSeam(tracks.zoom, tracks.position, idOf(c.id), EditTime(c.to), 0_s, end, ids);
        ASSERT_TRUE(roll) << c.what;
        EXPECT_EQ(roll->seam, EditTime(c.seam)) << c.what;
        EXPECT_EQ(written(roll->zooms), c.zooms) << c.what;
        EXPECT_EQ(written(roll->positions), c.positions) << c.what;
        EXPECT_EQ(roll->absorbed, c.absorbed) << c.what;
        EXPECT_EQ(roll->survivorID, c.survivor) << c.what;
        const auto next = std::ranges::find(roll->zooms, *roll->nextID, &ZoomKeyframe::id);
        ASSERT_TRUE(next != roll->zooms.end() && next != roll->zooms.begin()) << c.what;
        EXPECT_EQ(next->startTime, roll->seam) << c.what;
        EXPECT_EQ(std::prev(next)->id, roll->previousID) << c.what;
    }
    EXPECT_EQ(reasonOf(rollSeam(tracks.zoom, tracks.position, idOf(1), EditTime(3), 0_s, end, ids)),
              Reason::NoSeamBeforeFirstZoom);
    EXPECT_EQ(reasonOf(rollSeam(tracks.zoom, tracks.position, idOf(9), EditTime(3), 0_s, end, ids)),
              Reason::UnknownZoom);
}

TEST_F(ZoomTrackEditing, AShortZoomIsNotLostByASmallMove) {
    tracks.zoom = {ramp(1, 0, 0, 1), ramp(2, 5, 1, 2), ramp(3, 6, 1, 1)}; // zoom 2 has no hold
    const auto absorbed = [&](double to, double hold) {
        return rollSeam(tracks.zoom, {}, idOf(2), EditTime(to), Seconds(hold), end, ids)->absorbed.size();
    };
    EXPECT_EQ(absorbed(6.05, 0), 0U);
    EXPECT_EQ(absorbed(6.15, 0), 1U);
    EXPECT_EQ(absorbed(6.15, 0.5), 0U);
    EXPECT_EQ(absorbed(6.55, 0.5), 1U);
}

TEST_F(ZoomTrackEditing, ARebuildLaysAPairOnTheFocusOfTheHold) {
    struct Case {
        const char* what;
        int id;
        std::vector<PositionKeyframe> positions;
        const char* after;
    };
    for (const Case& c : {
             Case{"stray and detached keys go; on the ramp's start the hold before ends",
                  3,
                  {ownedKey(1, 0, 0.5), ownedKey(2, 6, 0.8, 2), ownedKey(3, 6.5, 0.7), ownedKey(4, 8, 0.4),
                   ownedKey(5, 11, 0.4), ownedKey(6, 12, 0.9), ownedKey(7, 15, 0.6, 3)},
                  "0:0.5 6:0.8/2 7:0.4/3 12:0.4/3"},
             {"where it drifts, the middle counts",
              2,
              {ownedKey(1, 0, 0.5), ownedKey(2, 3, 0.2), ownedKey(3, 6, 0.8)},
              "0:0.5 3:0.5/2 6:0.5/2"},
             {"also where the zoom's own key stands there",
              3,
              {ownedKey(1, 0, 0.5), ownedKey(2, 6, 0.8, 3), ownedKey(3, 9, 0.4)},
              "0:0.5 6:0.8/3 7:0.4/3 12:0.4/3"},
             {"the first key stays", 2, {ownedKey(1, 4, 0.3)}, "3:0.3/2 4:0.3 6:0.3/2"},
             {"and is one of the pair where it stands there", 2, {ownedKey(1, 3.02, 0.3, 2)}, "3.02:0.3/2 6:0.3/2"},
         }) {
        const auto rebuilt = rebuildPositionKeys(idOf(c.id), tracks.zoom, c.positions, end, ids);
        ASSERT_TRUE(rebuilt) << c.what;
        EXPECT_EQ(written(*rebuilt), c.after) << c.what;
    }
    EXPECT_EQ(reasonOf(rebuildPositionKeys(idOf(4), tracks.zoom, tracks.position, end, ids)),
              Reason::PullBackOwnsNoPositionKeys);
    EXPECT_EQ(reasonOf(rebuildPositionKeys(idOf(9), tracks.zoom, tracks.position, end, ids)), Reason::UnknownZoom);
    tracks.zoom[1].transitionTime = 4_s;
    EXPECT_EQ(reasonOf(rebuildPositionKeys(idOf(2), tracks.zoom, tracks.position, end, ids)), Reason::NoHold);
}

} // namespace
} // namespace morvelin
