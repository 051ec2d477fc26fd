// Sound at other speeds: the same pitch, every moment near its place, no clicks.

#include "media/TimeStretch.h"

#include <gtest/gtest.h>

#include "media/TestSound.h"

namespace morvelin {
namespace {

using Wave = std::function<double(std::int64_t sample)>;

/// What becomes of a wave of `seconds`, its left channel. Checks that the source is asked for growing moments only.
std::vector<float> stretched(const Wave& wave, double seconds, double speed) {
    const std::int64_t length = soundSamples(Seconds(seconds));
    std::int64_t asked = 0;
    TimeStretch stretch(
        [&](std::int64_t first, std::span<float> samples) {
            EXPECT_GE(first, asked);
            asked = first + static_cast<std::int64_t>(samples.size()) / kSoundChannels;
            EXPECT_LE(asked, length);
            for (std::size_t i = 0; i < samples.size(); ++i)
                samples[i] = static_cast<float>(wave(first + static_cast<std::int64_t>(i) / kSoundChannels));
        },
        length, speed);
    std::vector<float> samples(static_cast<std::size_t>(soundSamples(Seconds(seconds / speed)) * kSoundChannels));
    for (std::size_t from = 0; from < samples.size(); from += 2 * 735)
        stretch.read(std::span(samples).subspan(from, std::min<std::size_t>(2 * 735, samples.size() - from)));
    return leftOf(samples);
}

TEST(TimeStretch, KeepsThePitchAndDoesNotClick) {
    for (const double speed : {0.2, 0.5, 0.9, 1.25, 2.0, 4.0, 8.0, 40.0})
        for (const double frequency : {70.0, 440.0, 3000.0}) {
            const double perSample = 2 * std::numbers::pi * frequency / kSoundRate;
            const auto tone = [&](std::int64_t sample) {
                return 0.5 * std::sin(perSample * static_cast<double>(sample));
            };
            const auto heard = stretched(tone, speed * 3, speed);
            int crossings = 0;
            double steepest = 0;
            double loudest = 0;
            for (std::size_t i = 1; i + 2000 < heard.size(); ++i) {
                crossings += heard[i - 1] < 0 && heard[i] >= 0 ? 1 : 0;
                steepest = std::max(steepest, std::abs(static_cast<double>(heard[i]) - heard[i - 1]));
                loudest = std::max(loudest, std::abs(static_cast<double>(heard[i])));
            }
            const double seconds = static_cast<double>(heard.size() - 2000) / kSoundRate;
            EXPECT_NEAR(crossings / seconds / frequency, 1, 0.02) << frequency << " Hz at speed " << speed;
            EXPECT_LT(steepest, 0.5 * perSample * 1.1 + 0.002) << frequency << " Hz at speed " << speed;
            EXPECT_LT(loudest, 0.52) << frequency << " Hz at speed " << speed;
        }
}

TEST(TimeStretch, HearsEveryMomentInItsPlaceHoweverLongThePiece) {
    // A voice-like hum that gives way to a louder, higher tone each second, for 0.1 s of what is heard.
    for (const double speed : {0.25, 0.5, 1.5, 2.0, 4.0}) {
        const auto wave = [speed](std::int64_t sample) {
            const double t = static_cast<double>(sample) / kSoundRate;
            const double phase = std::fmod(t, 1.0);
            const bool isSignal = phase >= 0.5 && phase < 0.5 + 0.1 * speed;
            return isSignal ? 0.8 * std::sin(2 * std::numbers::pi * 1000 * t)
                            : 0.1 * std::sin(2 * std::numbers::pi * 150 * t);
        };
        const double seconds = 100 * std::min(speed, 1.0);
        const auto heard = stretched(wave, seconds, speed);
        int signals = 0;
        for (std::size_t i = 0; i < heard.size(); ++i) {
            if (std::abs(heard[i]) < 0.4F) continue;
            EXPECT_NEAR(static_cast<double>(i) / kSoundRate, (0.5 + signals) / speed, 0.01 / std::min(speed, 1.0))
                << "signal " << signals << " at " << speed;
            i += static_cast<std::size_t>(0.15 * kSoundRate);
            ++signals;
        }
        EXPECT_EQ(signals, static_cast<int>(seconds)) << speed;
    }
}

TEST(TimeStretch, BeginsExactlyAndEndsInSilence) {
    const auto wave = [](std::int64_t sample) { return 0.5 * std::sin(0.05 * static_cast<double>(sample)); };
    for (const double speed : {0.5, 3.0, 1000.0}) {
        const auto heard = stretched(wave, 1, speed);
        for (std::int64_t i = 0; i < std::min<std::int64_t>(800, static_cast<std::int64_t>(heard.size())); ++i)
            ASSERT_FLOAT_EQ(heard[static_cast<std::size_t>(i)], static_cast<float>(wave(i))) << speed;
    }
    // Asked for more than there is.
    TimeStretch stretch([&](std::int64_t, std::span<float> samples) { std::ranges::fill(samples, 0.5F); }, 4410, 2);
    std::vector<float> samples(2 * kSoundRate);
    stretch.read(samples);
    EXPECT_EQ(samples[2 * 1000], 0.5F);
    for (std::size_t i = 2 * 6000; i < samples.size(); ++i) ASSERT_EQ(samples[i], 0.0F);
}

} // namespace
} // namespace morvelin
