#include <gtest/gtest.h>

#include "Tracks.h"
#include "timeline/ClampCenter.h"
#include "timeline/ClickGroups.h"
#include "timeline/Tolerance.h"
#include "timeline/ZoomEngine.h"

namespace morvelin {
namespace {

std::vector<ClickPing> clicksAt(const std::vector<double>& times) {
    std::vector<ClickPing> clicks;
    for (const double t : times) clicks.push_back({EditTime(t), 0.1 + 0.05 * t, 0.5, MouseButton::Left, 1});
    return clicks;
}

ZoomTracks generate(std::vector<ClickPing> clicks, std::optional<Seconds> duration, EditingSettings settings = {}) {
    SeededIdSource ids(1);
    return ZoomEngine().generateKeyframes(std::move(clicks), settings, duration, ids);
}

struct Ramp {
    double start, transition, factor;
};

TEST(ZoomEngine, PlansRampsAroundClicks) {
    struct Case {
        const char* what;
        std::vector<double> clicks;
        std::optional<Seconds> duration;
        std::vector<Ramp> ramps; ///< after the base key
    };
    const std::vector<Case> cases{
        {"no clicks", {}, 10_s, {}},
        {"a click at 0 has no room", {0}, 10_s, {}},
        {"the first ramp may be short", {0.5}, 10_s, {{0, 0.1, 1.75}, {1.5, 1, 1}}},
        {"one click", {5}, 10_s, {{3.6, 1, 1.75}, {6, 1, 1}}},
        {"a close chain is one group", {5, 5.4, 5.8}, 10_s, {{3.6, 1, 1.75}, {6.8, 1, 1}}},
        {"1 s apart: two zooms, in between it pans", {5, 6}, 10_s, {{3.6, 1, 1.75}, {5.3, 0.3, 1.75}, {7, 1, 1}}},
        {"0.99 s apart: one zoom", {5, 5.99}, 10_s, {{3.6, 1, 1.75}, {6.99, 1, 1}}},
        {"far apart: out and in", {5, 8.4}, 20_s, {{3.6, 1, 1.75}, {6, 1, 1}, {7, 1, 1.75}, {9.4, 1, 1}}},
        {"a little closer: it stays in", {5, 8.3}, 20_s, {{3.6, 1, 1.75}, {6.9, 1, 1.75}, {9.3, 1, 1}}},
        {"out exactly by the end", {8.5}, 10_s, {{7.1, 1, 1.75}, {9, 1, 1}}},
        {"too near the end to go out", {9.5}, 10_s, {{8.1, 1, 1.75}}},
        {"unknown duration", {5}, {}, {{3.6, 1, 1.75}}},
        {"a duration of 0 is unknown", {5}, 0_s, {{3.6, 1, 1.75}}},
        {"the group without room still pushes the next", {0, 1}, 10_s, {{0.3, 0.3, 1.75}, {2, 1, 1}}},
    };
    for (const Case& c : cases) {
        const auto zooms = generate(clicksAt(c.clicks), c.duration).zoom;
        ASSERT_EQ(zooms.size(), c.ramps.size() + 1) << c.what;
        EXPECT_EQ(zooms[0].zoomFactor, 1) << c.what;
        for (std::size_t i = 0; i < c.ramps.size(); ++i) {
            EXPECT_NEAR(zooms[i + 1].startTime.value, c.ramps[i].start, 1e-9) << c.what;
            EXPECT_NEAR(zooms[i + 1].transitionTime.value, c.ramps[i].transition, 1e-9) << c.what;
            EXPECT_EQ(zooms[i + 1].zoomFactor, c.ramps[i].factor) << c.what;
            EXPECT_FALSE(zooms[i + 1].isManual);
        }
    }
}

TEST(ZoomEngine, HoldsTheViewUntilTheCameraLeaves) {
    struct Case {
        const char* what;
        std::vector<double> clicks;
        std::optional<Seconds> duration;
        std::vector<std::pair<double, double>> aims; ///< time and target x, after the base key
    };
    for (const Case& c : {
             Case{"until the zoom-out", {5}, 10_s, {{4.6, 0.35}, {6, 0.35}}},
             {"the mean of a group", {5, 5.4}, 10_s, {{4.6, 0.36}, {6.4, 0.36}}},
             {"until the next ramp", {5, 6}, 10_s, {{4.6, 0.35}, {5.3, 0.35}, {5.6, 0.4}, {7, 0.4}}},
             {"until the end", {9.5}, 10_s, {{9.1, 0.575}, {10, 0.575}}},
             {"unknown duration", {5}, {}, {{4.6, 0.35}}},
         }) {
        const ZoomTracks tracks = generate(clicksAt(c.clicks), c.duration);
        ASSERT_EQ(tracks.position.size(), c.aims.size() + 1) << c.what;
        for (std::size_t i = 0; i < c.aims.size(); ++i) {
            const PositionKeyframe& key = tracks.position[i + 1];
            EXPECT_NEAR(key.time.value, c.aims[i].first, 1e-9) << c.what;
            EXPECT_NEAR(key.targetX, c.aims[i].second, 1e-9) << c.what;
            EXPECT_EQ(key.centerX, clampCenter({key.targetX, 0.5}, 1.75, 0).x) << c.what;
        }
        EXPECT_EQ(tracks.position[1].zoomKeyframeID, tracks.zoom[1].id) << c.what;
    }
}

/// Groups as first told: plan all, merge the first pair that collides, and start anew.
std::vector<std::vector<double>> groupsByRestarting(const std::vector<double>& clicks, const RampTiming& timing) {
    std::vector<std::vector<double>> groups;
    for (std::size_t i = 0; i < clicks.size(); ++i) {
        if (i == 0 || clicks[i] - clicks[i - 1] > timing.anticipation.value + 1e-9) groups.emplace_back();
        groups.back().push_back(clicks[i]);
    }
    const auto planOf = [&](std::size_t i) {
        double room = timing.lead.value;
        const double first = groups[i].front();
        if (i > 0) room = std::min(room, (timing.anticipation.value + first - groups[i - 1].back()) * 0.5);
        room = std::min(room, first);
        return std::pair(first - room, room - timing.anticipation.value);
    };
    const auto mergeOnce = [&] {
        std::optional<std::size_t> previous;
        for (std::size_t i = 0; i < groups.size(); ++i) {
            const auto [start, transition] = planOf(i);
            if (transition <= 1e-9) continue;
            if (previous &&
                (start - transition < planOf(*previous).first - 1e-9 || transition < timing.minRamp.value - 1e-9)) {
                for (std::size_t k = *previous + 1; k <= i; ++k)
                    groups[*previous].insert(groups[*previous].end(), groups[k].begin(), groups[k].end());
                const auto after = groups.begin() + static_cast<std::ptrdiff_t>(*previous) + 1;
                groups.erase(after, after + static_cast<std::ptrdiff_t>(i - *previous));
                return true;
            }
            previous = i;
        }
        return false;
    };
    while (mergeOnce()) {}
    return groups;
}

EditingSettings randomSettings(test::Random& random) {
    EditingSettings settings;
    settings.zoomTransitionTime = Seconds(random.once(6) ? 0 : random.tenth(0, 3));
    settings.clickAnticipation = Seconds(random.once(6) ? 0 : random.tenth(-0.2, 1.5));
    settings.dezoomAfterInactivity = Seconds(random.tenth(0, 4));
    return settings;
}

std::vector<double> randomClickTimes(test::Random& random) {
    std::vector<double> times;
    const double length = random.number(1, 100);
    for (int i = random.count(1, 60); i > 0; --i)
        times.push_back(random.once(2) ? random.tenth(0, length) : random.number(0, length));
    std::ranges::sort(times);
    return times;
}

TEST(ClickGroups, EqualThoseOfMergingOneByOne) {
    test::Random random(21);
    for (int round = 0; round < 2000; ++round) {
        std::vector<double> times = randomClickTimes(random);
        const RampTiming timing(randomSettings(random));
        // Just too far to join the group before, and too close for a ramp.
        for (int i = random.count(0, 3); i > 0; --i)
            times.push_back(times[static_cast<std::size_t>(i) % times.size()] + timing.anticipation.value + 1.5e-9);
        std::ranges::sort(times);
        const std::vector<ClickPing> clicks = clicksAt(times);
        std::vector<std::vector<double>> groups;
        for (const ClickGroup& group : clickGroups(clicks, timing)) {
            groups.emplace_back();
            for (const ClickPing& click : group.clicks) groups.back().push_back(click.time.value);
        }
        ASSERT_EQ(groups, groupsByRestarting(times, timing)) << "round " << round;
    }
}

TEST(ZoomEngine, MakesSortedRampsThatNeverOverlap) {
    test::Random random(22);
    for (int round = 0; round < 1000; ++round) {
        std::vector<ClickPing> clicks = clicksAt(randomClickTimes(random));
        const auto duration = random.once(4) ? std::nullopt : std::optional(clicks.back().time.sinceZero() + 3_s);
        const EditingSettings settings = randomSettings(random);
        const ZoomTracks tracks = generate(clicks, duration, settings);
        std::shuffle(clicks.begin(), clicks.end(), random.engine());
        const ZoomTracks again = generate(clicks, duration, settings);
        ASSERT_EQ(tracks.zoom, again.zoom) << "the order of the clicks does not count";

        for (std::size_t i = 0; i + 1 < tracks.zoom.size(); ++i) {
            const ZoomKeyframe& key = tracks.zoom[i];
            ASSERT_TRUE(atMost(key.startTime + key.transitionTime, tracks.zoom[i + 1].startTime)) << round;
        }
        ASSERT_TRUE(std::ranges::is_sorted(tracks.position, {}, &PositionKeyframe::time));
        for (const PositionKeyframe& key : tracks.position)
            ASSERT_EQ(clampCenter({key.centerX, key.centerY}, 1.75, 0), (NormalizedPoint{key.centerX, key.centerY}));
        if (duration) {
            ASSERT_TRUE(atMost(tracks.zoom.back().startTime + tracks.zoom.back().transitionTime, EditTime(*duration)));
        }
    }
}

} // namespace
} // namespace morvelin
