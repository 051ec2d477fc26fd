#include "narration/AudioEnvelope.h"

#include <algorithm>
#include <cmath>

namespace morvelin {

namespace {

/// What is no number is silent.
float peakOf(std::span<const float> samples) {
    float peak = 0;
    for (const float sample : samples) peak = std::max(peak, std::isnan(sample) ? 0 : std::abs(sample));
    return std::min(peak, 1.0F);
}

} // namespace

AudioEnvelope audioEnvelope(const SoundSamples& sound, double start, double step) {
    if (!(step > 0) || !(sound.rate > 0) || sound.channels <= 0) return {start, step, {}};
    AudioEnvelope envelope{start, std::max(step, 1 / sound.rate), {}};
    const auto channels = static_cast<std::size_t>(sound.channels);
    const std::size_t moments = sound.samples.size() / channels;
    std::size_t from = 0;
    for (double stretch = 1; from < moments; ++stretch) {
        // Counted from the beginning, so that a step of an odd length doesn't drift.
        const double end = std::min(std::round(stretch * envelope.step * sound.rate), static_cast<double>(moments));
        const std::size_t to = std::max(static_cast<std::size_t>(end), from + 1);
        envelope.peaks.push_back(peakOf(sound.samples.subspan(from * channels, (to - from) * channels)));
        from = to;
    }
    return envelope;
}

} // namespace morvelin
