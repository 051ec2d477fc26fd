#include "media/PacedResampler.h"

#include <array>
#include <cmath>
#include <numbers>

namespace morvelin {

namespace {

constexpr std::ptrdiff_t kChannels = 2;
/// Input frames that each output frame is made of, half of them after it. With this window the pass band is flat up to
/// 17 kHz at 44.1 kHz.
constexpr std::ptrdiff_t kTaps = 32;
constexpr std::ptrdiff_t kBefore = kTaps / 2 - 1;
/// Places between two input frames for which coefficients are kept; between those they are interpolated, with an error
/// some 100 dB below the sound.
constexpr std::size_t kPhases = 256;

/// One coefficient for each sample of the frames that make one: each stands twice, for left and right.
using Coefficients = std::array<float, static_cast<std::size_t>(kTaps* kChannels)>;

double besselI0(double x) {
    double sum = 1;
    double term = 1;
    for (int k = 1; term > 1e-12 * sum; ++k) {
        term *= (x / (2 * k)) * (x / (2 * k));
        sum += term;
    }
    return sum;
}

/// A sinc in a Kaiser window.
double kernel(double distance) {
    constexpr double kBeta = 8;
    const double place = distance / (kTaps / 2);
    if (std::abs(place) >= 1) return 0;
    const double window = besselI0(kBeta * std::sqrt(1 - place * place)) / besselI0(kBeta);
    const double angle = std::numbers::pi * distance;
    return distance == 0 ? window : window * std::sin(angle) / angle;
}

Coefficients coefficientsFor(double fraction) {
    std::array<double, kTaps> values{};
    double sum = 0;
    for (std::ptrdiff_t tap = 0; tap < kTaps; ++tap)
        sum += values[static_cast<std::size_t>(tap)] = kernel(static_cast<double>(tap - kBefore) - fraction);
    Coefficients coefficients{};
    for (std::size_t sample = 0; sample < coefficients.size(); ++sample)
        coefficients[sample] = static_cast<float>(values[sample / kChannels] / sum);
    return coefficients;
}

const std::array<Coefficients, kPhases + 1>& phaseTable() {
    static const auto table = [] {
        std::array<Coefficients, kPhases + 1> made{};
        for (std::size_t phase = 0; phase < made.size(); ++phase)
            made[phase] = coefficientsFor(static_cast<double>(phase) / kPhases);
        return made;
    }();
    return table;
}

struct Frame {
    float left;
    float right;
};

/// The frame `fraction` behind the input frame that has `kBefore` frames between itself and `first`.
Frame interpolate(const float* first, double fraction) {
    const double place = fraction * kPhases;
    const auto phase = static_cast<std::size_t>(place);
    const float between = static_cast<float>(place - static_cast<double>(phase));
    const Coefficients& low = phaseTable()[phase];
    const Coefficients& high = phaseTable()[phase + 1];
    // Eight sums side by side, which the compiler makes vectors of.
    std::array<float, 8> sums{};
    for (std::size_t sample = 0; sample < low.size(); sample += sums.size())
        for (std::size_t lane = 0; lane < sums.size(); ++lane) {
            const std::size_t at = sample + lane;
            sums[lane] += first[at] * (low[at] + between * (high[at] - low[at]));
        }
    return {sums[0] + sums[2] + sums[4] + sums[6], sums[1] + sums[3] + sums[5] + sums[7]};
}

} // namespace

PacedResampler::PacedResampler() { reset(); }

void PacedResampler::reset() {
    m_input.assign(static_cast<std::size_t>(kBefore * kChannels), 0);
    m_firstFrame = -kBefore;
    m_position = kBefore;
}

std::ptrdiff_t PacedResampler::pushed() const {
    return m_firstFrame + static_cast<std::ptrdiff_t>(m_input.size()) / kChannels;
}

void PacedResampler::push(std::span<const float> samples) {
    m_input.insert(m_input.end(), samples.begin(), samples.end());
}

void PacedResampler::pull(double pace, std::vector<float>& out) {
    const auto frames = static_cast<std::ptrdiff_t>(m_input.size()) / kChannels;
    for (;;) {
        const auto whole = static_cast<std::ptrdiff_t>(m_position);
        const std::ptrdiff_t first = whole - kBefore;
        if (first + kTaps > frames) break;
        const Frame frame = interpolate(&m_input[static_cast<std::size_t>(first * kChannels)],
                                        m_position - static_cast<double>(whole));
        out.push_back(frame.left);
        out.push_back(frame.right);
        m_position += pace;
    }
    forgetUsed();
}

void PacedResampler::drain(double pace, std::vector<float>& out) {
    m_input.resize(m_input.size() + static_cast<std::size_t>((kTaps - kBefore - 1) * kChannels), 0);
    pull(pace, out);
}

void PacedResampler::forgetUsed() {
    const std::ptrdiff_t unused = static_cast<std::ptrdiff_t>(m_position) - kBefore;
    m_input.erase(m_input.begin(), m_input.begin() + unused * kChannels);
    m_firstFrame += unused;
    m_position -= static_cast<double>(unused);
}

} // namespace morvelin
