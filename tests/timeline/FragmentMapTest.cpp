#include <gtest/gtest.h>

#include "Tracks.h"
#include "timeline/ClickPings.h"
#include "timeline/FragmentMap.h"

namespace morvelin {
namespace {

using test::fragment;

double orMinusOne(std::optional<EditTime> t) { return t ? t->value : -1; }
double orMinusOne(std::optional<FragmentMap::SourceMoment> moment) { return moment ? moment->time.value : -1; }

TEST(FragmentMap, LaysFragmentsOutByOrderAndSpeed) {
    const FragmentMap map({fragment(2, 0, 10, 2), fragment(0, 20, 23), fragment(1, 5, 6, 0), fragment(3, 8, 7)});
    ASSERT_EQ(map.spans().size(), 4U);
    EXPECT_EQ(map.duration(), 8_s);
    const double starts[] = {0, 3, 3, 8};
    const double lengths[] = {3, 0, 5, 0};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(map.spans()[i].start.value, starts[i]) << i;
        EXPECT_EQ(map.spans()[i].length.value, lengths[i]) << i;
    }
}

TEST(FragmentMap, FindsWhereARecordedMomentIsSeen) {
    // Edit: 0..4 shows 10..14, 4..6 shows 0..4 at double speed, 6..8 shows 3..5 once more.
    const FragmentMap map({fragment(0, 10, 14), fragment(1, 0, 4, 2), fragment(2, 3, 5), fragment(3, 6, 9, 0)});
    struct Case {
        double source, edit;
    };
    for (const Case& c : {Case{10, 0},
                          {14, 4},
                          {14 + 5e-10, 4},
                          {14.001, -1},
                          {0, 4},
                          {-5e-10, 4},
                          {-0.001, -1},
                          {2, 5},
                          {3, 5.5},
                          {4, 6},
                          {4.5, 7.5},
                          {5, 8},
                          {7, -1}})
        EXPECT_NEAR(orMinusOne(map.editTime(SourceTime(c.source))), c.edit, 1e-12) << c.source;
}

TEST(FragmentMap, GivesACutToTheLaterFragmentAndTheEndToTheLast) {
    const FragmentMap map({fragment(0, 10, 14), fragment(1, 0, 4, 2), fragment(2, 20, 21, 0)});
    struct Case {
        double edit, source, held;
    };
    for (const Case& c : {Case{0, 10, 10},
                          {3.9, 13.9, 13.9},
                          {4, 0, 0},
                          {4 - 5e-10, 0, 0},
                          {5, 2, 2},
                          {6, 4, 4},
                          {6 + 5e-10, 4, 4},
                          {6.1, -1, 4},
                          {-0.1, -1, 10}}) {
        EXPECT_NEAR(orMinusOne(map.sourceTime(EditTime(c.edit))), c.source, 1e-9) << c.edit;
        EXPECT_NEAR(orMinusOne(map.heldSourceTime(EditTime(c.edit))), c.held, 1e-9) << c.edit;
    }
    EXPECT_EQ(map.sourceTime(4_s)->span, 1U);
    for (const FragmentMap& nothing : {FragmentMap(), FragmentMap({fragment(0, 1, 2, -1)})}) {
        EXPECT_FALSE(nothing.heldSourceTime(0_s));
        EXPECT_FALSE(nothing.editTime(1.5_s));
    }
}

/// The rule word for word: the first fragment in order that holds the moment.
std::optional<EditTime> searched(const FragmentMap& map, SourceTime s) {
    for (const auto& span : map.spans()) {
        const VideoFragment& f = span.fragment;
        if (f.speed > 0 && f.sourceStart.value - 1e-9 <= s.value && s.value <= f.sourceEnd.value + 1e-9)
            return span.start + (s - f.sourceStart) / f.speed;
    }
    return std::nullopt;
}

TEST(FragmentMap, AgreesWithASearchThroughAnyFragments) {
    test::Random random(11);
    for (int round = 0; round < 200; ++round) {
        std::vector<VideoFragment> fragments;
        for (int i = random.count(0, 12); i > 0; --i)
            fragments.push_back(fragment(random.count(0, 8), random.tenth(0, 10), random.tenth(0, 10),
                                         random.once(6) ? 0 : random.number(0.25, 4)));
        const FragmentMap map(fragments);
        for (int i = 0; i < 100; ++i) {
            const SourceTime s(random.tenth(-1, 11));
            ASSERT_NEAR(orMinusOne(map.editTime(s)), orMinusOne(searched(map, s)), 1e-8) << s.value;
            const EditTime t(random.number(0, map.duration().value));
            const auto moment = map.sourceTime(t);
            ASSERT_EQ(moment.has_value(), map.duration() > 0_s);
            if (!moment) continue;
            const auto& span = map.spans()[moment->span];
            ASSERT_NEAR((span.start + (moment->time - span.fragment.sourceStart) / span.fragment.speed).value, t.value,
                        1e-8);
        }
    }
}

TEST(ClickPings, LeaveOutWhatWasCut) {
    std::vector<CursorEvent> events{test::pressAt(1), test::moveAt(2, 0, 0), test::pressAt(6), test::pressAt(12, 0.1)};
    events.back().button = std::nullopt;
    events.back().clickCount = std::nullopt;
    EXPECT_EQ(clickPings(events).size(), 3U);
    const auto pings = clickPings(events, FragmentMap({fragment(0, 0, 5), fragment(1, 10, 20, 2)}));
    ASSERT_EQ(pings.size(), 2U);
    EXPECT_EQ(pings[0], (ClickPing{1_s, 0.5, 0.5, MouseButton::Left, 1}));
    EXPECT_EQ(pings[1], (ClickPing{6_s, 0.1, 0.5, MouseButton::Left, 1}));
}

} // namespace
} // namespace morvelin
