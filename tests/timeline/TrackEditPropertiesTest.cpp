// What no edit may break, tried on random tracks.
#include <gtest/gtest.h>

#include "EditTracks.h"
#include "timeline/ClampCenter.h"
#include "timeline/DenseCurve.h"
#include "timeline/FragmentStretch.h"
#include "timeline/FragmentSurgery.h"
#include "timeline/PositionKeyEdits.h"
#include "timeline/PositionKeys.h"
#include "timeline/PositionTrack.h"
#include "timeline/SpanEdits.h"
#include "timeline/TrackLimits.h"
#include "timeline/ZoomPositionKeys.h"
#include "timeline/ZoomSeamRoll.h"
#include "timeline/ZoomTrack.h"

namespace morvelin {
namespace {

constexpr double kPadding = 0.05;
/// How far a cut's end may land from where it was asked for: 0.05 s of the recording in the slowest motion.
constexpr Seconds kSnap{0.26};

void expectValid(const ZoomTracks& camera) {
    for (std::size_t i = 1; i < camera.zoom.size(); ++i)
        ASSERT_TRUE(atMost(rampEnd(camera.zoom[i - 1]), camera.zoom[i].startTime)) << i;
    ASSERT_FALSE(camera.zoom.empty());
    ASSERT_FALSE(camera.position.empty());
    ASSERT_EQ(camera.position.front().time, EditTime()) << "the first key anchors the track";
    for (std::size_t i = 1; i < camera.position.size(); ++i)
        ASSERT_TRUE(atLeast(camera.position[i].time - camera.position[i - 1].time, kLeastKeyGap))
            << camera.position[i - 1].time.value << " " << camera.position[i].time.value;
    for (const PositionKeyframe& key : camera.position) {
        const auto owner = std::ranges::find_if(
            camera.zoom, [&](const auto& zoom) { return key.zoomKeyframeID && zoom.id == *key.zoomKeyframeID; });
        ASSERT_EQ(key.zoomKeyframeID.has_value(), owner != camera.zoom.end()) << "no key of a ramp that is gone";
    }
}

void expectValid(const TimelineTracks& tracks) {
    expectValid(tracks.camera);
    Seconds sum = 0_s;
    for (std::size_t i = 0; i < tracks.fragments.size(); ++i) {
        ASSERT_EQ(tracks.fragments[i].order, static_cast<std::int64_t>(i));
        sum += tracks.fragments[i].length();
    }
    ASSERT_NEAR(sum.value, tracks.duration().value, 1e-9);
    for (const MaskKeyframe& mask : tracks.masks) {
        ASSERT_LE(mask.startTime, mask.endTime);
        ASSERT_TRUE(atMost(mask.endTime, EditTime(tracks.duration())));
    }
}

class TrackEditProperties : public testing::TestWithParam<int> {
protected:
    TrackEditProperties()
        : random(static_cast<std::uint64_t>(GetParam())),
          ids(static_cast<std::uint64_t>(GetParam())) {
        tracks = test::randomTracks(random, ids);
        end = EditTime(tracks.duration());
    }

    EditTime anyTime() { return EditTime(random.number(0, end.value)); }

    test::Random random;
    SeededIdSource ids;
    TimelineTracks tracks;
    EditTime end;
};

TEST_P(TrackEditProperties, ACutNeitherMovesWhatLiesBeforeNorReframesWhatLiesBehind) {
    for (int round = 0; round < 20; ++round) {
        EditTime from = anyTime();
        EditTime to = anyTime();
        if (to < from) std::swap(from, to);
        const auto edit = cut(tracks, from, to, ids);
        if (!edit) continue;
        const TimelineTracks& after = edit->tracks;
        expectValid(after);
        ASSERT_NEAR(after.duration().value, (tracks.duration() - edit->removed).value, 1e-9);

        const FragmentMap before(tracks.fragments), behind(after.fragments);
        const ZoomTrack oldZoom(tracks.camera.zoom), newZoom(after.camera.zoom);
        for (double t = 0; t < after.duration().value; t += 0.37) {
            const bool isBefore = t < from.value - kSnap.value;
            if (!isBefore && t < from.value + kSnap.value) continue;
            const EditTime old = isBefore ? EditTime(t) : EditTime(t) + edit->removed;
            ASSERT_NEAR(behind.sourceTime(EditTime(t))->time.value, before.sourceTime(old)->time.value, 1e-6) << t;
        }
        for (const ZoomKeyframe& zoom : tracks.camera.zoom) {
            const bool runsFree = rampEnd(zoom) < from - kSnap;
            const bool isSettledBehind = zoom.startTime > to + kSnap;
            if (runsFree) { ASSERT_NE(std::ranges::find(after.camera.zoom, zoom), after.camera.zoom.end()); }
            if (isSettledBehind) {
                ASSERT_NEAR(newZoom.zoomAt(rampEnd(zoom) - edit->removed), oldZoom.zoomAt(rampEnd(zoom)), 1e-6);
            }
        }
        for (const PositionKeyframe& key : tracks.camera.position)
            if (key.time < from - kSnap) {
                const auto kept = std::ranges::find(after.camera.position, key.id, &PositionKeyframe::id);
                // Keys of a ramp that went with the cut may go too.
                if (kept != after.camera.position.end()) { ASSERT_EQ(kept->time, key.time); }
            }
    }
}

TEST_P(TrackEditProperties, ASplitChangesNothingThatIsSeen) {
    for (int round = 0; round < 20; ++round) {
        const auto split = FragmentSurgery::split(tracks.fragments, anyTime(), ids);
        if (!split) continue;
        const FragmentMap before(tracks.fragments), after(split->fragments);
        ASSERT_NEAR(before.duration().value, after.duration().value, 1e-9);
        for (double t = 0.01; t < end.value; t += 0.31)
            ASSERT_NEAR(before.sourceTime(EditTime(t))->time.value, after.sourceTime(EditTime(t))->time.value, 1e-6);
    }
}

TEST_P(TrackEditProperties, SpeedAndStretchingKeepTheTracksValid) {
    for (int round = 0; round < 20; ++round) {
        const EditTime from = anyTime();
        if (const auto edit = setSpeed(tracks, from, EditTime(random.number(from.value, end.value)),
                                       random.number(0.2, 40), ids))
            expectValid(edit->tracks);
        const VideoFragment& fragment =
            tracks.fragments[static_cast<std::size_t>(random.count(0, static_cast<int>(tracks.fragments.size()) - 1))];
        const auto side = random.once(2) ? FragmentStretchSide::Left : FragmentStretchSide::Right;
        const auto edit = stretchFragment(tracks, fragment.id, side, anyTime(), 60_s);
        ASSERT_TRUE(edit);
        expectValid(edit->tracks);
    }
}

TEST_P(TrackEditProperties, AnySeriesOfTrackEditsKeepsTheTracksValid) {
    ZoomTracks camera = tracks.camera;
    for (int round = 0; round < 60; ++round) {
        const auto anyZoom = [&] {
            return camera.zoom[static_cast<std::size_t>(random.count(0, static_cast<int>(camera.zoom.size()) - 1))].id;
        };
        const auto anyKey = [&] {
            return camera
                .position[static_cast<std::size_t>(random.count(0, static_cast<int>(camera.position.size()) - 1))]
                .id;
        };
        const auto aim = random.once(2) ? std::optional(NormalizedPoint{random.number(0, 1), 0.5}) : std::nullopt;
        const auto take = [&](auto result) {
            if (result) camera = std::move(*result);
        };
        switch (random.count(0, 6)) {
        case 0:
            if (auto made = ZoomTrackEdits::insertZoom(
                    camera, {anyTime(), random.number(1, 4), Seconds(random.number(0, 1)), {}, aim}, end, ids))
                camera = std::move(made->tracks);
            break;
        case 1:
            take(ZoomTrackEdits::updateZoom(
                camera, anyZoom(), {anyTime(), Seconds(random.number(0, 1)), random.number(1, 4), {}, aim}, end, ids));
            break;
        case 2: take(ZoomTrackEdits::removeZoom(camera, anyZoom(), end)); break;
        case 3:
            if (auto roll = ZoomTrackEdits::rollSeam(camera.zoom, camera.position, anyZoom(), anyTime(), 0_s, end, ids))
                camera = {std::move(roll->zooms), std::move(roll->positions)};
            break;
        case 4:
            if (auto keys = ZoomTrackEdits::rebuildPositionKeys(anyZoom(), camera.zoom, camera.position, end, ids))
                camera.position = std::move(*keys);
            break;
        case 5:
            if (auto added = PositionKeyEdits::addKey(camera.position, anyTime(), {0.3, 0.3}, end, ids))
                camera.position = std::move(added->positions);
            break;
        case 6: take(PositionKeyEdits::removeKey(camera, anyKey())); break;
        }
        expectValid(camera);
        if (HasFatalFailure()) FAIL() << "after edit " << round;
    }
}

TEST_P(TrackEditProperties, TheCameraStaysInsideItsClampAndNeverOvershoots) {
    const auto edit = cut(tracks, EditTime(end.value * 0.3), EditTime(end.value * 0.6), ids);
    if (!edit) return;
    const ZoomTracks& camera = edit->tracks.camera;
    const std::vector<PositionKeyframe> keys = refitPositionKeys(camera.position, camera.zoom, kPadding);
    double most = 1;
    for (const ZoomKeyframe& zoom : camera.zoom) most = std::max(most, zoom.zoomFactor);
    for (const PositionKeyframe& key : keys) {
        const NormalizedPoint inside = clampCenter({key.centerX, key.centerY}, most, kPadding);
        ASSERT_NEAR(inside.x, key.centerX, 1e-9);
        ASSERT_NEAR(inside.y, key.centerY, 1e-9);
    }

    std::vector<CursorEvent> events;
    for (double s = 0; s < 60; s += 0.1) events.push_back(test::moveAt(s, 0.5, 0.5));
    const auto frames = denseFrames(camera.zoom, keys, events, FragmentMap(edit->tracks.fragments));
    for (std::size_t i = 1; i < frames.size(); ++i) {
        const DenseZoomFrame& a = frames[i - 1];
        const DenseZoomFrame& b = frames[i];
        for (const double p : {0.2, 0.5, 0.8}) {
            const DenseZoomFrame read = sampleDenseFrames(frames, a.time + (b.time - a.time) * p);
            const auto isBetween = [](double value, double from, double to) {
                return value >= std::min(from, to) - 1e-9 && value <= std::max(from, to) + 1e-9;
            };
            ASSERT_TRUE(isBetween(read.zoom, a.zoom, b.zoom)) << i;
            ASSERT_TRUE(isBetween(read.centerX, a.centerX, b.centerX)) << i;
            ASSERT_TRUE(isBetween(read.centerY, a.centerY, b.centerY)) << i;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, TrackEditProperties, testing::Range(1, 41));

} // namespace
} // namespace morvelin
