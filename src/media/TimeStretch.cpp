#include "media/TimeStretch.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/Sound.h"

namespace morvelin {

namespace {

constexpr std::int64_t kHalf = kSoundRate / 200 * 4; ///< half a stretch, 20 ms
constexpr std::int64_t kSearch = kSoundRate / 100;   ///< 10 ms to either side
constexpr std::int64_t kCoarse = 4;                  ///< samples that are compared as one, at first
constexpr double kPullToIdeal = 0.02;                ///< what likeness must gain to go to the end of the search
static_assert(kHalf % kCoarse == 0);

/// How alike two runs of samples are, -1 to 1.
double likeness(const float* a, const float* b, std::int64_t count) {
    double product = 0;
    double powerA = 1e-9;
    double powerB = 1e-9;
    for (std::int64_t i = 0; i < count; ++i) {
        product += static_cast<double>(a[i]) * b[i];
        powerA += static_cast<double>(a[i]) * a[i];
        powerB += static_cast<double>(b[i]) * b[i];
    }
    return product / std::sqrt(powerA * powerB);
}

std::int64_t firstPlace(std::int64_t ideal) { return std::max<std::int64_t>(ideal - kSearch, 0); }

/// The share of the new stretch in an overlap; the old one's is the rest.
const std::vector<float>& overlapGains() {
    static const std::vector<float> gains = [] {
        std::vector<float> made;
        for (std::int64_t i = 0; i < kHalf; ++i) {
            const double phase = (static_cast<double>(i) + 0.5) / static_cast<double>(kHalf);
            made.push_back(static_cast<float>(0.5 - 0.5 * std::cos(std::numbers::pi * phase)));
        }
        return made;
    }();
    return gains;
}

} // namespace

TimeStretch::TimeStretch(Source source, std::int64_t length, double speed)
    : m_source(std::move(source)),
      m_length(length),
      m_speed(speed) {}

void TimeStretch::read(std::span<float> samples) {
    while (!samples.empty()) {
        if (m_used == m_made.size()) makeStretch();
        const std::size_t count = std::min(samples.size(), m_made.size() - m_used);
        std::copy_n(m_made.begin() + static_cast<std::ptrdiff_t>(m_used), count, samples.begin());
        m_used += count;
        samples = samples.subspan(count);
    }
}

/// The first half of the next stretch, over the second half of the one before.
void TimeStretch::makeStretch() {
    // In its middle, where it is heard alone, a stretch shall be where the speed wants it.
    const auto middle = std::llround(static_cast<double>((m_stretch + 1) * kHalf) * m_speed);
    const std::int64_t ideal = std::max<std::int64_t>(middle - kHalf, 0);
    const std::int64_t natural = m_previous + kHalf;
    const bool isFirst = m_stretch == 0;
    hold(isFirst ? 0 : std::min(natural, firstPlace(ideal)), ideal + kSearch + 2 * kHalf);
    const std::int64_t place = isFirst ? 0 : placeFor(ideal, natural);
    m_made.assign(at(place), at(place) + kHalf * kSoundChannels);
    if (!isFirst && place != natural) {
        const float* before = at(natural);
        for (std::int64_t i = 0; i < kHalf * kSoundChannels; ++i) {
            const float gain = overlapGains()[static_cast<std::size_t>(i / kSoundChannels)];
            float& sample = m_made[static_cast<std::size_t>(i)];
            sample = before[i] + gain * (sample - before[i]);
        }
    }
    m_used = 0;
    m_previous = place;
    ++m_stretch;
}

/// Where around `ideal` the sound is most like what lies at `natural`, which would go on without a seam.
std::int64_t TimeStretch::placeFor(std::int64_t ideal, std::int64_t natural) const {
    const std::int64_t first = firstPlace(ideal);
    const std::int64_t last = std::max(std::min(ideal + kSearch, m_length - kHalf), first);
    std::int64_t best = std::clamp(ideal, first, last);
    double bestScore = -2;
    const auto tryAt = [&](std::int64_t place, const float* candidate, const float* wanted, std::int64_t count) {
        const double distance = static_cast<double>(std::abs(place - ideal)) / static_cast<double>(kSearch);
        const double score = likeness(candidate, wanted, count) - kPullToIdeal * distance;
        if (score <= bestScore) return;
        bestScore = score;
        best = place;
    };
    const auto coarse = [this](std::int64_t sample) { return m_mono.data() + (sample - m_heldFrom) / kCoarse; };
    for (std::int64_t place = first; place <= last; place += kCoarse)
        tryAt(place, coarse(place), coarse(natural), kHalf / kCoarse);
    const std::int64_t middle = best;
    bestScore = -2;
    for (std::int64_t place = std::max(middle - kCoarse, first); place <= std::min(middle + kCoarse, last); ++place)
        tryAt(place, at(place), at(natural), kHalf * kSoundChannels);
    return best;
}

/// Has the source from `first` up to `end` at hand, and forgets what lies before. Both grow from call to call.
void TimeStretch::hold(std::int64_t first, std::int64_t end) {
    const std::int64_t heldEnd = m_heldFrom + static_cast<std::int64_t>(m_held.size()) / kSoundChannels;
    const std::int64_t from = std::max(first, heldEnd);
    m_held.erase(m_held.begin(), m_held.end() - static_cast<std::ptrdiff_t>((from - first) * kSoundChannels));
    const std::size_t kept = m_held.size();
    m_held.resize(static_cast<std::size_t>((end - first) * kSoundChannels));
    const std::int64_t heard = std::min(end, m_length) - from;
    if (heard > 0) m_source(from, std::span(m_held).subspan(kept, static_cast<std::size_t>(heard * kSoundChannels)));
    m_heldFrom = first;
    m_mono.resize(m_held.size() / kSoundChannels / kCoarse);
    for (std::size_t i = 0; i < m_mono.size(); ++i) {
        m_mono[i] = 0;
        for (std::size_t k = 0; k < kCoarse * kSoundChannels; ++k)
            m_mono[i] += m_held[i * kCoarse * kSoundChannels + k];
    }
}

const float* TimeStretch::at(std::int64_t sample) const {
    return m_held.data() + (sample - m_heldFrom) * kSoundChannels;
}

} // namespace morvelin
