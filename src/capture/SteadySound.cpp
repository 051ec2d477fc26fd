#include "capture/SteadySound.h"

#include <algorithm>
#include <cmath>

namespace morvelin {

namespace {

/// Chunks' times are trusted only as a mean over about so long.
constexpr Seconds kSmoothing{1};
/// An error this large is no matter of clocks: sound was lost, or the device stood still.
constexpr double kLargestError = 0.04;
/// What is left of an error after 10 s is a third of it; a device's pace is known after about a minute.
constexpr double kCorrectionPerSecond = 0.1;
constexpr double kLearningPerSecond = kCorrectionPerSecond * kCorrectionPerSecond / 4;
/// A larger error tells of something lost more than of a clock.
constexpr double kLargestLesson = 0.005;
constexpr double kLargestDrift = 0.001;
constexpr double kLargestCorrection = 0.003;

float fadeGain(std::int64_t framesFromEdge) {
    return static_cast<float>(std::min(framesFromEdge, kSoundFade)) / static_cast<float>(kSoundFade);
}

std::int64_t framesIn(std::size_t samples) { return static_cast<std::int64_t>(samples) / kSoundChannels; }
std::size_t samplesIn(std::int64_t frames) { return static_cast<std::size_t>(frames * kSoundChannels); }

} // namespace

std::int64_t SteadySound::made() const { return m_taken + framesIn(m_frames.size()); }

/// While sound runs its end is held back: it may have to fade out.
std::int64_t SteadySound::complete() const { return m_isRunning ? std::max(made() - kSoundFade, m_taken) : made(); }

void SteadySound::takeTo(std::int64_t frame, std::vector<float>& out) {
    const std::int64_t count = std::min(frame, complete()) - m_taken;
    if (count <= 0) return;
    const auto end = m_frames.begin() + static_cast<std::ptrdiff_t>(samplesIn(count));
    out.insert(out.end(), m_frames.begin(), end);
    m_frames.erase(m_frames.begin(), end);
    m_taken += count;
}

void SteadySound::add(const SoundChunk& chunk) {
    if (m_isRunning && chunk.followsGap) breakOff();
    if (m_isRunning) follow(chunk);
    if (!m_isRunning) begin(chunk);

    std::span<const float> samples = chunk.samples;
    const std::int64_t skipped = std::min(m_toSkip, framesIn(samples.size()));
    m_toSkip -= skipped;
    samples = samples.subspan(samplesIn(skipped));
    if (samples.empty()) return;

    const std::int64_t before = made();
    m_resampler.push(samples);
    m_resampler.pull(pace(), m_frames);
    m_heard += framesIn(samples.size());
    scale(before, std::min(made(), m_begun + kSoundFade),
          [&](std::int64_t frame) { return fadeGain(frame - m_begun); });
}

double SteadySound::pace() const {
    return 1 + std::clamp(m_drift - kCorrectionPerSecond * m_error, -kLargestCorrection, kLargestCorrection);
}

/// Multiplies the frames [from, to) by what `gain` gives for each.
template <class Gain>
void SteadySound::scale(std::int64_t from, std::int64_t to, const Gain& gain) {
    for (std::int64_t frame = from; frame < to; ++frame)
        for (float& sample : std::span(m_frames).subspan(samplesIn(frame - m_taken), kSoundChannels))
            sample *= gain(frame);
}

/// Compares the chunk's time with where its sound is going to lie. Ends the run where they are far apart.
void SteadySound::follow(const SoundChunk& chunk) {
    const double length = static_cast<double>(framesIn(chunk.samples.size())) / kSoundRate;
    // The time of what the next frame reads, by this chunk; and by the frame's own number.
    const HostTime heardAt = chunk.time +
                             Seconds((m_resampler.position() + static_cast<double>(m_toSkip - m_heard)) / kSoundRate);
    const HostTime placedAt = m_zero + Seconds(static_cast<double>(made()) / kSoundRate);
    const double error = (heardAt - placedAt).value;
    m_error += (error - m_error) * (1 - std::exp(-length / kSmoothing.value));
    if (std::abs(m_error) > kLargestError) return breakOff();
    const double lesson = std::clamp(m_error, -kLargestLesson, kLargestLesson);
    m_drift = std::clamp(m_drift - kLearningPerSecond * lesson * length, -kLargestDrift, kLargestDrift);
}

void SteadySound::begin(const SoundChunk& chunk) {
    const std::int64_t place = frameAt(chunk.time);
    appendSilence(place - made());
    m_isRunning = true;
    m_begun = made();
    m_toSkip = m_begun - place;
    m_heard = 0;
    m_error = 0;
    m_resampler.reset();
}

void SteadySound::breakOff() {
    m_resampler.drain(pace(), m_frames);
    m_isRunning = false;
    const std::int64_t end = made();
    scale(std::max({end - kSoundFade, m_begun, m_taken}), end,
          [&](std::int64_t frame) { return fadeGain(end - frame); });
}

void SteadySound::fillTo(std::int64_t frame) {
    if (frame <= complete()) return;
    if (m_isRunning) breakOff();
    appendSilence(frame - made());
}

void SteadySound::appendSilence(std::int64_t frames) {
    m_frames.resize(m_frames.size() + samplesIn(std::max<std::int64_t>(frames, 0)), 0);
}

} // namespace morvelin
