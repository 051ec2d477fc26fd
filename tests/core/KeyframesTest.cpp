#include <gtest/gtest.h>

#include "core/Keyframes.h"

namespace morvelin {
namespace {

FocusKeyframe oval(Seconds length, Seconds fadeOut) {
    FocusKeyframe key;
    key.startTime = 10_s;
    key.endTime = key.startTime + length;
    key.fadeOutDuration = fadeOut;
    return key;
}

TEST(FocusOpacity, FadesInAtItsHeadAndOutOverItsOwnLength) {
    struct Case {
        const char* what;
        Seconds length, fadeOut, into;
        double opacity;
    };
    for (const Case& c : {
             Case{"before", 1_s, 0.5_s, -0.01_s, 0},
             {"half of the capped fade-in", 1_s, 0_s, 0.1_s, 0.5},
             {"a short oval fades in faster", 0.25_s, 0_s, 0.05_s, 0.5},
             {"plateau", 1_s, 0.5_s, 0.4_s, 1},
             {"half of the fade-out", 1_s, 0.5_s, 0.75_s, 0.5},
             {"no fade-out", 1_s, 0_s, 0.999_s, 1},
             {"a negative fade-out is none", 1_s, -1_s, 0.999_s, 1},
             {"a fade-out longer than the oval is cut to it", 1_s, 9_s, 0.3_s, 0.7},
             {"fade-in and fade-out meet: the smaller counts", 1_s, 1_s, 0.1_s, 0.5},
             {"its end is outside", 1_s, 0_s, 1_s, 0},
             {"no length", 0_s, 0.5_s, 0_s, 0},
             {"negative length", -1_s, 0.5_s, -0.5_s, 0},
         })
        EXPECT_NEAR(focusOpacity(oval(c.length, c.fadeOut), EditTime(10_s) + c.into), c.opacity, 1e-9) << c.what;
}

TEST(TapTapOpacity, IsFullOnlyBetweenItsFadeInAndFadeOut) {
    TapTapKeyframe key;
    key.startTime = 2_s;
    key.endTime = 4_s;
    struct Case {
        double share, opacity;
    };
    for (const Case& c : {Case{-0.01, 0}, {0, 0}, {0.025, 0.5}, {0.05, 1}, {0.5, 1}, {0.85, 1}, {0.925, 0.5}, {1, 0}})
        EXPECT_NEAR(tapTapOpacity(key, key.startTime + 2_s * c.share), c.opacity, 1e-9) << c.share;
    key.endTime = key.startTime;
    EXPECT_EQ(tapTapOpacity(key, key.startTime), 0);
}

} // namespace
} // namespace morvelin
