// What is told of a take in danger, and how its rate falls with a machine that can't keep up: on virtual clocks.

#include <gmock/gmock.h>

#include "capture/FrameRateControl.h"
#include "capture/TakeWatch.h"
#include "core/base/SimulatedEventLoop.h"

namespace morvelin {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kMegabyte = 1'000'000;

class TakeWatchTest : public testing::Test {
protected:
    SimulatedEventLoop loop;
    TakeWatch::Reading reading;
    std::vector<std::string> told;
    double megabytesPerSecond = 0;
    bool turns = true;

    /// Lets time pass in a take that grows and turns as it should.
    void pass(Seconds length) {
        for (const HostTime end = loop.now() + length; loop.now() < end;) {
            loop.advance(0.25_s);
            if (turns) reading.lastTurn = loop.now();
            const auto grown = static_cast<std::int64_t>(megabytesPerSecond * 0.25 * kMegabyte);
            reading.takenBytes += grown;
            if (reading.freeBytes) *reading.freeBytes -= grown;
        }
    }

    TakeWatch watch{loop, [this] { return reading; },
                    [this](const std::string& sentence) { told.push_back(sentence); }};
};

} // namespace

TEST_F(TakeWatchTest, TellsOnceThatTheDiskLastsAMinute) {
    reading.freeBytes = 100 * kMegabyte;
    pass(20_s);
    EXPECT_THAT(told, IsEmpty()) << "nothing grows";
    megabytesPerSecond = 1;
    pass(30_s);
    EXPECT_THAT(told, IsEmpty()) << "70 s are left";
    pass(20_s);
    EXPECT_THAT(told, ElementsAre("The disk is nearly full: at this rate the recording can go on for about 60 s."));
    reading.freeBytes = 1000 * kMegabyte;
    pass(5_s);
    reading.freeBytes = 40 * kMegabyte;
    pass(5_s);
    EXPECT_EQ(told.size(), 2U) << "after there was room for long";
}

TEST_F(TakeWatchTest, TellsOfAStandstillWithinTwoSecondsAndOfItsEnd) {
    pass(3_s);
    turns = false;
    pass(1.5_s);
    EXPECT_THAT(told, IsEmpty());
    pass(0.5_s);
    ASSERT_EQ(told.size(), 1U);
    pass(3_s);
    turns = true;
    pass(0.5_s);
    EXPECT_THAT(told, ElementsAre(testing::StartsWith("The recording stands still"), "The recording goes on."));
    turns = false;
    reading.lastTurn.reset(); // paused
    pass(10_s);
    EXPECT_EQ(told.size(), 2U);
}

TEST(FrameRateControl, GoesDownOnlyWhereTheMachineCannotKeepUpAndComesBack) {
    struct Stretch {
        Seconds length;
        Seconds work;  ///< for each frame
        Seconds every; ///< at most so often a frame comes
        double rate;   ///< at its end
    };
    const std::vector<std::pair<const char*, std::vector<Stretch>>> cases{
        {"quick work", {{20_s, 0.005_s, 0_s, 60}}},
        {"slow work", {{4_s, 0.020_s, 0_s, 30}, {20_s, 0.020_s, 0_s, 30}}},
        {"very slow work", {{10_s, 0.050_s, 0_s, 15}}},
        {"hopeless work", {{30_s, 0.200_s, 0_s, 15}}},
        {"a slow frame now and then", {{30_s, 0.100_s, 0.5_s, 60}}},
        {"a second of slow work", {{1.2_s, 0.030_s, 0_s, 60}, {5_s, 0.005_s, 0_s, 60}}},
        {"work that becomes easy", {{5_s, 0.025_s, 0_s, 30}, {5_s, 0.004_s, 0_s, 30}, {9_s, 0.004_s, 0_s, 60}}},
        {"work that only 30 bear", {{5_s, 0.020_s, 0_s, 30}, {60_s, 0.010_s, 0_s, 30}}},
    };
    for (const auto& [what, stretches] : cases) {
        FrameRateControl control;
        HostTime now;
        double lowest = 60;
        for (const auto& [length, work, every, rate] : stretches) {
            for (const HostTime end = now + length; now < end;) {
                now += work;
                control.recorded(now, work);
                now += std::max({control.interval() - work, every - work, 0_s});
                lowest = std::min(lowest, 1 / control.interval().value);
            }
            EXPECT_NEAR(1 / control.interval().value, rate, 1e-9) << what;
        }
        EXPECT_NEAR(control.lowestRate(), lowest, 1e-9) << what;
    }
}

} // namespace morvelin
