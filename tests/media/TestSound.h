// Sound whose every sample can be told from its neighbours, and how far decoded sound lies from it.
#pragma once

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <span>
#include <vector>

#include "platform/Sound.h"

namespace morvelin {

/// A tone that rises from 200 to 4,000 Hz in each second, softer on the right.
inline std::vector<float> risingTone(double seconds, double phase = 0) {
    std::vector<float> samples;
    for (std::int64_t i = 0; i < soundSamples(Seconds(seconds)); ++i) {
        const double t = static_cast<double>(i % kSoundRate) / kSoundRate;
        const double value = 0.5 * std::sin(phase + 2 * std::numbers::pi * (200 * t + 1900 * t * t));
        samples.push_back(static_cast<float>(value));
        samples.push_back(static_cast<float>(0.5 * value));
    }
    return samples;
}

/// A WAV file of 16 bits.
inline void writeWave(const std::filesystem::path& path, int rate, std::uint16_t channels,
                      const std::vector<float>& samples) {
    std::ofstream file(path, std::ios::binary);
    const auto put = [&](std::uint32_t value, int bytes) {
        for (; bytes > 0; --bytes, value >>= 8) file.put(static_cast<char>(value & 0xFF));
    };
    const auto size = static_cast<std::uint32_t>(samples.size() * 2);
    file << "RIFF";
    put(36 + size, 4);
    file << "WAVEfmt ";
    put(16, 4);
    put(1, 2);
    put(channels, 2);
    put(static_cast<std::uint32_t>(rate), 4);
    put(static_cast<std::uint32_t>(rate) * channels * 2, 4);
    put(channels * 2u, 2);
    put(16, 2);
    file << "data";
    put(size, 4);
    for (const float sample : samples) put(static_cast<std::uint16_t>(std::lround(sample * 32767)), 2);
}

/// The left channel of interleaved sound.
inline std::vector<float> leftOf(std::span<const float> interleaved) {
    std::vector<float> left;
    for (std::size_t i = 0; i < interleaved.size(); i += kSoundChannels) left.push_back(interleaved[i]);
    return left;
}

/// How strong the difference of two sounds is against the first of them, `lag` samples later in the second; over what
/// both hold between two samples.
inline double noiseAt(std::span<const float> wanted, std::span<const float> got, std::int64_t lag, std::int64_t from,
                      std::int64_t to) {
    double noise = 0;
    double power = 1e-12;
    for (std::int64_t i = from; i < to; ++i) {
        const std::int64_t other = i + lag;
        const bool isThere = other >= 0 && other < static_cast<std::int64_t>(got.size());
        const double sample = wanted[static_cast<std::size_t>(i)];
        const double difference = sample - (isThere ? got[static_cast<std::size_t>(other)] : 0.0);
        noise += difference * difference;
        power += sample * sample;
    }
    return noise / power;
}

/// By how many samples `got` lies late, from its likeness to `wanted` in between these samples.
inline std::int64_t lagOf(std::span<const float> wanted, std::span<const float> got, std::int64_t from,
                          std::int64_t to) {
    std::int64_t best = 0;
    for (std::int64_t lag = -1500; lag <= 1500; ++lag)
        if (noiseAt(wanted, got, lag, from, to) < noiseAt(wanted, got, best, from, to)) best = lag;
    return best;
}

} // namespace morvelin
