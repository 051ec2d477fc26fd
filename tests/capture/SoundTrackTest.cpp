// Sound laid against the picture: devices' clocks that run off, times that are only about right, gaps, pauses.

#include <array>
#include <cmath>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

#include "capture/SoundTrack.h"

namespace morvelin {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr int kChunk = 882;

/// A device whose clock runs `drift` fast and whose chunks' times are off by up to `jitter`. It hears a click each second
/// of the machine's clock, and a steady tone of 441 Hz of it, quietly, all the time.
class Device {
public:
    explicit Device(HostTime start, double drift = 0, Seconds jitter = {})
        : m_now(start),
          m_drift(drift),
          m_jitter(jitter) {}

    void hear(SoundTrack& track, HostTime until) {
        std::uniform_real_distribution<double> off(-m_jitter.value, m_jitter.value);
        const double rate = kSoundRate * (1 + m_drift);
        for (; m_now < until; m_now += Seconds(kChunk / rate)) {
            m_samples.clear();
            for (int frame = 0; frame < kChunk; ++frame) {
                const double t = m_now.value + frame / rate;
                m_samples.push_back(static_cast<float>(0.25 * std::sin(2 * kPi * 441 * t)));
                m_samples.push_back(clickAt(t));
            }
            track.add({m_now + Seconds(off(m_random)), m_samples, std::exchange(m_tellsGap, false)});
        }
    }
    /// Loses some sound, or hears some again.
    void skip(Seconds length, bool tells) {
        m_now += length;
        m_tellsGap = tells;
    }

private:
    /// A pulse of 1 ms, as smooth as its band allows.
    static float clickAt(double t) {
        const double place = (t - std::round(t)) / 0.0005;
        return std::abs(place) < 1 ? static_cast<float>(0.5 + 0.5 * std::cos(kPi * place)) : 0.0F;
    }

    HostTime m_now;
    double m_drift;
    Seconds m_jitter;
    bool m_tellsGap = false;
    std::mt19937 m_random{7};
    std::vector<float> m_samples;
};

/// Where the clicks of the right channel are, in seconds of the movie.
std::vector<double> clicks(const std::vector<float>& samples) {
    std::vector<double> found;
    double weight = 0;
    double moment = 0;
    for (std::size_t frame = 0; frame < samples.size() / 2; ++frame) {
        const double level = samples[2 * frame + 1];
        if (level > 0.1) {
            weight += level;
            moment += level * static_cast<double>(frame);
        } else if (weight > 0) {
            found.push_back(moment / weight / kSoundRate);
            weight = moment = 0;
        }
    }
    return found;
}

/// The largest step between neighbouring samples of the tone, which is 0.0157 where nothing is cut.
double largestStep(const std::vector<float>& samples) {
    double largest = 0;
    for (std::size_t sample = 2; sample < samples.size(); sample += 2)
        largest = std::max(largest, static_cast<double>(std::abs(samples[sample] - samples[sample - 2])));
    return largest;
}

/// How far the tone's pitch leaves 441 Hz over a tenth of a second, as a share.
double largestDetuning(const std::vector<float>& samples) {
    std::vector<double> crossings;
    for (std::size_t sample = 2; sample < samples.size(); sample += 2)
        if (samples[sample - 2] < 0 && samples[sample] >= 0)
            crossings.push_back(static_cast<double>(sample) / 2 -
                                samples[sample] / (samples[sample] - samples[sample - 2]));
    double largest = 0;
    for (std::size_t at = 88; at < crossings.size(); at += 44)
        largest = std::max(largest, std::abs((crossings[at] - crossings[at - 44]) / 4400 - 1));
    return largest;
}

std::vector<float> taken(SoundTrack& track, HostTime until) {
    std::vector<float> samples;
    track.fillTo(until);
    track.takeTo(until, samples);
    return samples;
}

} // namespace

TEST(SoundTrack, KeepsStepWithADeviceWhoseClockRunsOff) {
    struct Case {
        double drift;
        Seconds jitter;
        double offset; ///< of a click, at most, in seconds
    };
    for (const Case& c : {Case{0, 0_s, 2e-5}, {2e-4, 0_s, 2e-3}, {-2e-4, 0.005_s, 4e-3}, {8e-4, 0.01_s, 9e-3}}) {
        SoundTrack track(10_s);
        Device(9.5_s, c.drift, c.jitter).hear(track, 150.1_s);
        const auto samples = taken(track, 150_s);
        EXPECT_EQ(samples.size(), 140U * kSoundRate * 2);
        const auto heard = clicks(samples);
        ASSERT_EQ(heard.size(), 139U) << "the one at 0 fades in";
        for (std::size_t click = 0; click < heard.size(); ++click) {
            const double after = static_cast<double>(click + 1);
            EXPECT_NEAR(heard[click], after, click < 100 ? c.offset + c.jitter.value : 1.5e-3) << c.drift;
        }
        EXPECT_LT(largestStep(samples), 0.0165) << "nothing was dropped or said twice";
        EXPECT_LT(largestDetuning(samples), 0.0035) << c.drift;
        EXPECT_NEAR(track.drift(), c.drift, 5e-5);
    }
}

TEST(SoundTrack, CutsPausesAtTheirMomentsWithoutAClick) {
    SoundTrack track(10_s);
    std::vector<float> samples;
    Device device(10_s, 1e-4);
    device.hear(track, 12.3_s);
    track.takeTo(12_s, samples);
    track.pause(12.5_s);
    track.pause(12.6_s);
    device.hear(track, 15_s);
    track.takeTo(14_s, samples);
    track.resume(14.75_s);
    track.resume(14.9_s);
    track.pause(15.25_s);
    track.resume(15.25_s);
    device.hear(track, 17_s);
    track.takeTo(16.5_s, samples);

    EXPECT_EQ(track.length(), static_cast<std::int64_t>(4.25 * kSoundRate));
    EXPECT_EQ(samples.size(), static_cast<std::size_t>(track.length()) * 2);
    const auto heard = clicks(samples);
    ASSERT_EQ(heard.size(), 4U);
    constexpr std::array kKept{1.0, 2.0, 2.75, 3.75}; // those at 13 and 14 are cut
    for (std::size_t click = 0; click < 4; ++click) EXPECT_NEAR(heard[click], kKept[click], 5e-4);
    EXPECT_LT(largestStep(samples), 0.0165);
    const auto level = [&](double seconds) {
        return std::abs(samples[static_cast<std::size_t>(seconds * kSoundRate) * 2]);
    };
    EXPECT_LT(level(2.5), 0.01);
    EXPECT_LT(level(2.75 + 0.25), 0.01);
}

TEST(SoundTrack, StaysInStepWhenAPauseIsToldLate) {
    SoundTrack track(10_s);
    std::vector<float> samples;
    Device device(10_s);
    device.hear(track, 13_s);
    track.takeTo(12.5_s, samples);
    track.pause(12.2_s);  // 0.3 s too many are in the movie
    track.resume(12.4_s); // of which 0.1 s are right
    device.hear(track, 16_s);
    track.takeTo(15.5_s, samples);
    EXPECT_EQ(track.length(), static_cast<std::int64_t>(5.3 * kSoundRate));
    EXPECT_NEAR(clicks(samples).back(), 4.8, 1e-4);
}

TEST(SoundTrack, PutsSilenceWhereTheDeviceGaveNothing) {
    struct Case {
        const char* what;
        Seconds skipped;
        bool isTold;
        Seconds settling; ///< how long after the gap a click is in its place again
    };
    for (const Case& c : {Case{"a gap that the device tells of", 0.5_s, true, 0_s},
                          {"a gap that nobody tells of", 0.5_s, false, 0.4_s},
                          {"a small gap that nobody tells of", 0.06_s, false, 2_s},
                          {"a device that stood still", 7.8_s, false, 0.1_s},
                          {"a device that hears again what it heard before", -0.5_s, true, 0_s}}) {
        SoundTrack track(10_s);
        Device device(10_s);
        std::vector<float> samples;
        device.hear(track, 12.3_s);
        track.takeTo(12.2_s, samples);
        if (c.skipped > 2_s) track.fillTo(19_s);
        device.skip(c.skipped, c.isTold);
        device.hear(track, 30_s);
        track.takeTo(29_s, samples);
        EXPECT_EQ(samples.size(), 19U * kSoundRate * 2) << c.what;
        const auto heard = clicks(samples);
        EXPECT_GE(heard.size(), 10U) << c.what;
        for (const double click : heard) {
            const bool hasSettled = click < 2.3 || click > 2.3 + (c.skipped + c.settling).value;
            EXPECT_TRUE(!hasSettled || std::abs(click - std::round(click)) < 2e-4) << c.what << ", " << click;
        }
        EXPECT_LT(largestStep(samples), c.isTold ? 0.0165 : 0.5) << c.what;
    }
}

TEST(SoundTrack, BeginsWithThePicture) {
    SoundTrack late(10_s);
    EXPECT_EQ(taken(late, 10.5_s), std::vector<float>(22050 * 2)) << "nothing came yet";
    Device(10.7_s).hear(late, 12_s);
    std::vector<float> samples;
    late.takeTo(11.5_s, samples);
    ASSERT_EQ(clicks(samples).size(), 1U);
    EXPECT_NEAR(clicks(samples)[0], 0.5, 1e-4);
    EXPECT_FALSE(late.hasAllTo(12.5_s));
    EXPECT_TRUE(late.hasAllTo(11.9_s));
}

} // namespace morvelin
