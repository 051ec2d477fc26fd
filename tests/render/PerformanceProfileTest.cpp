#include "render/PerformanceProfile.h"

#include <gtest/gtest.h>

namespace morvelin {
namespace {

using Tier = PerformanceProfile::Tier;

TEST(PerformanceProfile, FollowsTheMachineUnlessItIsForced) {
    struct Case {
        MachineFacts machine;
        const char* forced;
        Tier tier;
        std::optional<Tier> forcedTier;
    };
    for (const Case& c : {Case{{4, true}, "", Tier::Full, {}},
                          {{3, true}, "", Tier::Low, {}},
                          {{7, false}, "fast", Tier::Low, {}},
                          {{8, false}, "", Tier::Full, {}},
                          {{2, false}, "FULL", Tier::Full, Tier::Full},
                          {{16, true}, "Low", Tier::Low, Tier::Low}}) {
        const auto profile = PerformanceProfile::of(c.machine, c.forced);
        EXPECT_EQ(profile.tier, c.tier) << c.machine.performanceCores << c.forced;
        EXPECT_EQ(profile.forcedTier, c.forcedTier) << c.forced;
    }
}

} // namespace
} // namespace morvelin
