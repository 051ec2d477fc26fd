#include "narration/AudioEnvelope.h"

#include <cmath>
#include <limits>
#include <numbers>

#include <gmock/gmock.h>

namespace morvelin {
namespace {

using testing::ElementsAre;
using testing::FloatNear;

TEST(AudioEnvelope, TellsTheLoudestMomentOfEachStep) {
    const std::vector<float> sound{0.1F, -0.5F, 0.2F, 0, 0, 0, -2, 0.3F};
    EXPECT_THAT(audioEnvelope({sound, 1, 4}, 1.5, 0.5).peaks, ElementsAre(0.5F, 0.2F, 0, 1))
        << "2 is cut at full scale";
    EXPECT_EQ(audioEnvelope({sound, 1, 4}, 1.5, 0.5).start, 1.5);
    EXPECT_THAT(audioEnvelope({sound, 2, 4}, 0, 0.5).peaks, ElementsAre(0.5F, 1)) << "the louder channel";
    EXPECT_THAT(audioEnvelope({sound, 1, 4}, 0, 1.25).peaks, ElementsAre(0.5F, 1)) << "a rest of three moments";
    EXPECT_THAT(audioEnvelope({sound, 3, 4}, 0, 9).peaks, ElementsAre(0.5F)) << "half a moment at the end is none";
    const AudioEnvelope fine = audioEnvelope({sound, 1, 4}, 0, 1e-9);
    EXPECT_EQ(fine.peaks.size(), 8U);
    EXPECT_EQ(fine.step, 0.25);
    for (const double nothing : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_THAT(audioEnvelope({sound, 1, 4}, 0, nothing).peaks, testing::IsEmpty());
    EXPECT_THAT(audioEnvelope({{}, 1, 4}, 0, 1).peaks, testing::IsEmpty());
    const std::vector<float> damaged{std::numeric_limits<float>::quiet_NaN(), 0.25F};
    EXPECT_THAT(audioEnvelope({damaged, 1, 1}, 0, 2).peaks, ElementsAre(0.25F));
}

TEST(AudioEnvelope, AStepOfAnOddLengthDoesNotDrift) {
    constexpr double kRate = 44100, kStep = 1 / 60.0; // 735 moments
    std::vector<float> tone(static_cast<std::size_t>(kRate * 20));
    for (std::size_t i = 0; i < tone.size(); ++i) {
        const double t = static_cast<double>(i) / kRate;
        const double loudness = t < 13 ? 0.1 : 0.8;
        tone[i] = static_cast<float>(loudness * std::sin(2 * std::numbers::pi * 440 * t));
    }
    for (const double step : {kStep, 0.0123456}) {
        const AudioEnvelope envelope = audioEnvelope({tone, 1, kRate}, 0, step);
        EXPECT_NEAR(static_cast<double>(envelope.peaks.size()), std::ceil(20 / step), 1);
        for (std::size_t i = 0; i < envelope.peaks.size(); ++i) {
            const double from = static_cast<double>(i) * step;
            if (from + step < 13) { EXPECT_THAT(envelope.peaks[i], FloatNear(0.1F, 0.01F)) << from; }
            if (from > 13 && from + step < 20) { EXPECT_THAT(envelope.peaks[i], FloatNear(0.8F, 0.01F)) << from; }
        }
    }
}

} // namespace
} // namespace morvelin
