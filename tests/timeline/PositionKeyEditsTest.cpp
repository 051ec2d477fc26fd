#include <gtest/gtest.h>

#include "EditTracks.h"
#include "timeline/AutoTimeline.h"
#include "timeline/PositionKeyEdits.h"
#include "timeline/PositionSelectionChain.h"
#include "timeline/SpanEdits.h"
#include "timeline/ZoomTrackEdits.h"

namespace morvelin {
namespace {

using namespace PositionKeyEdits;
using test::idOf;
using test::ownedKey;
using test::ramp;
using test::written;
using Reason = Refusal::Reason;

class PositionKeyEditing : public testing::Test {
protected:
    std::vector<PositionKeyframe> keys{ownedKey(1, 0, 0.5), ownedKey(2, 3, 0.8, 2), ownedKey(3, 6, 0.8, 2)};
    EditTime end{20};
    SeededIdSource ids{1};
};

TEST_F(PositionKeyEditing, KeysStayApart) {
    struct Case {
        double time;
        std::optional<Reason> add, move;
    };
    for (const Case& c : {Case{4, {}, {}},
                          {2.95, {}, {}},
                          {3.05, {}, {}},
                          {2.951, Reason::TooClose, {}}, // too close to the moved key itself alone
                          {0.05, {}, {}},
                          {0.049, Reason::TooClose, Reason::TooClose},
                          {5.96, Reason::TooClose, Reason::TooClose},
                          {20, {}, {}},
                          {20.1, Reason::OutsideTimeline, Reason::OutsideTimeline},
                          {-0.1, Reason::OutsideTimeline, Reason::OutsideTimeline}}) {
        const auto added = addKey(keys, EditTime(c.time), {0.1, 0.2}, end, ids);
        EXPECT_EQ(added ? std::nullopt : std::optional(added.error().reason), c.add) << c.time;
        const auto moved = updateKey(keys, idOf(2), {EditTime(c.time), {}, {}}, end);
        EXPECT_EQ(moved ? std::nullopt : std::optional(moved.error().reason), c.move) << c.time;
    }
}

TEST_F(PositionKeyEditing, AnEditedKeyIsFreeAndTheFirstStaysPut) {
    EXPECT_EQ(written(*updateKey(keys, idOf(2), {EditTime(8), {}, {}}, end)), "0:0.5 6:0.8/2 8:0.8");
    EXPECT_EQ(written(*updateKey(keys, idOf(2), {{}, 0.1, {}}, end)), "0:0.5 3:0.1 6:0.8/2");
    EXPECT_EQ(written(*updateKey(keys, idOf(2), {EditTime(3), 0.8, {}}, end)), written(keys)) << "nothing changes";
    EXPECT_EQ(written(*updateKey(keys, idOf(1), {EditTime(0), 0.1, {}}, end)), "0:0.1 3:0.8/2 6:0.8/2");
    EXPECT_EQ(updateKey(keys, idOf(1), {EditTime(1), {}, {}}, end).error().reason, Reason::FirstKeyIsFixed);
    EXPECT_EQ(updateKey(keys, idOf(9), {}, end).error().reason, Reason::UnknownKey);

    const ZoomTracks tracks{{ramp(2, 2, 1, 2)}, keys};
    EXPECT_EQ(written(removeKey(tracks, idOf(2))->position), "0:0.5 6:0.8/2");
    EXPECT_EQ(removeKey(tracks, idOf(1)).error().reason, Reason::FirstKeyIsFixed);
    EXPECT_EQ(removeKey(tracks, idOf(9)).error().reason, Reason::UnknownKey);
}

class AutoTimeline : public testing::Test {
protected:
    [[nodiscard]] ZoomTracks rebuilt() { return rebuiltZoomTracks(events, fragments, {}, ids); }

    std::vector<CursorEvent> events{test::pressAt(5, 0.8, 0.5), test::pressAt(12, 0.2, 0.5)};
    std::vector<VideoFragment> fragments{test::fragment(0, 0, 20)};
    SeededIdSource ids{1};
};

TEST_F(AutoTimeline, FollowsTheClicksThatTheEditShows) {
    EXPECT_EQ(written(rebuilt().zoom), "0+0>1 3.6+1>1.75 6+1>1 10.6+1>1.75 13+1>1");
    fragments = {test::fragment(0, 10, 20, 2)}; // the first click is cut out, the second plays at 1 s
    EXPECT_EQ(written(rebuilt().zoom), "0+0>1 0+0.6>1.75 2+1>1");
    EXPECT_EQ(rebuilt().position.back().targetX, 0.2);
}

TEST_F(AutoTimeline, KnowsHandEditsFromGeneratedKeys) {
    const EditTime end(20);
    const ZoomTracks made = rebuilt();
    EXPECT_FALSE(hasHandEdits(made));
    EXPECT_FALSE(hasHandEdits({{ZoomKeyframe::baseline(ids)}, {PositionKeyframe::baseline(ids)}}));

    const UUID zoom = made.zoom[1].id;
    const UUID key = made.position[1].id;
    EXPECT_TRUE(hasHandEdits(*ZoomTrackEdits::updateZoom(made, zoom, {{}, {}, 2, {}, {}}, end, ids)));
    EXPECT_TRUE(hasHandEdits(*ZoomTrackEdits::removeZoom(made, made.zoom[2].id, end)));
    EXPECT_TRUE(hasHandEdits(ZoomTrackEdits::insertZoom(made, {EditTime(16), 2, 1_s, {}, {}}, end, ids)->tracks));
    EXPECT_TRUE(hasHandEdits({made.zoom, *updateKey(made.position, key, {{}, 0.1, {}}, end)}));
    EXPECT_TRUE(hasHandEdits({made.zoom, *updateKey(made.position, made.position[0].id, {{}, 0.1, {}}, end)}));
    EXPECT_TRUE(hasHandEdits(*removeKey(made, key)));

    const TimelineTracks tracks{fragments, made, {}, {}, {}};
    for (const auto& [from, to] : {std::pair{0.0, 5.5}, {0.0, 8.0}, {4.0, 5.0}, {1.0, 9.0}, {5.5, 20.0}})
        EXPECT_FALSE(hasHandEdits(cut(tracks, EditTime(from), EditTime(to), ids)->tracks.camera)) << from << " " << to;
    EXPECT_FALSE(hasHandEdits(setSpeed(tracks, EditTime(1), EditTime(15), 40, ids)->tracks.camera));
}

TEST(PositionChain, KeysThatHoldOneViewMoveTogether) {
    // A slow pan: each key is joined to its neighbour, though the last differs from the first by more than the slack.
    const std::vector<PositionKeyframe> keys{ownedKey(7, 9, 0.2),     ownedKey(1, 0, 0.5),     ownedKey(2, 2, 0.8),
                                             ownedKey(3, 4, 0.80005), ownedKey(4, 5, 0.80015), ownedKey(5, 6, 0.8003),
                                             ownedKey(6, 8, 0.2)};
    struct Case {
        int selected;
        std::set<UUID> together;
        std::optional<UUID> next;
    };
    for (const Case& c : {Case{1, {idOf(1)}, idOf(2)},
                          {2, {idOf(2), idOf(3), idOf(4)}, idOf(5)},
                          {4, {idOf(2), idOf(3), idOf(4)}, idOf(5)},
                          {5, {idOf(5)}, idOf(6)},
                          {6, {idOf(6), idOf(7)}, {}}}) {
        const auto chain = positionSelectionChain(keys, idOf(c.selected));
        ASSERT_TRUE(chain) << c.selected;
        EXPECT_EQ(chain->selectedIDs, c.together) << c.selected;
        EXPECT_EQ(chain->nextDifferentID, c.next) << c.selected;
    }
    EXPECT_FALSE(positionSelectionChain(keys, idOf(99)));
    PositionKeyframe higher = keys[0];
    higher.targetY += 0.1;
    EXPECT_FALSE(areJoined(keys[0], higher)) << "both axes count";
}

} // namespace
} // namespace morvelin
