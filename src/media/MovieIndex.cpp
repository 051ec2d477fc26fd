#include "media/MovieIndex.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace morvelin {

namespace {

constexpr double kTimeTolerance = 1e-9; // seconds; a time computed from a frame's number may fall just short of it
constexpr double kHighestRate = 240;
/// Frames that come only when something on a screen changes say nothing about how smoothly it may move.
constexpr double kScreenRate = 60;
constexpr double kSlowestMotion = 24;
constexpr std::size_t kFewestToTell = 10;

/// The usual rate nearest to `rate`, if it lies within `tolerance` (a share of the rate) of it.
std::optional<double> usualRateNear(double rate, std::span<const double> rates, double tolerance) {
    const auto nearest = std::ranges::min_element(rates, {},
                                                  [rate](double candidate) { return std::abs(candidate - rate); });
    if (std::abs(*nearest - rate) > tolerance * rate) return std::nullopt;
    return *nearest;
}

/// Containers round times (Matroska to whole milliseconds), so an average is close to the true rate but seldom equal.
double steadyRate(double rate) {
    static constexpr std::array kRates{24 / 1.001, 24.0, 25.0,  30 / 1.001,  30.0,  48.0,  50.0, 60 / 1.001,
                                       60.0,       90.0, 100.0, 120 / 1.001, 120.0, 144.0, 240.0};
    return usualRateNear(rate, kRates, 0.0003).value_or(rate);
}

/// Screens redraw at a few rates; what is measured from bursts scatters around them.
double burstRate(double rate) {
    static constexpr std::array kRates{1.0,  2.0,  5.0,  8.0,  10.0, 12.0, 15.0,  20.0,  24.0,  25.0,  30.0,
                                       48.0, 50.0, 60.0, 72.0, 75.0, 90.0, 100.0, 120.0, 144.0, 165.0, 240.0};
    return usualRateNear(rate, kRates, 0.08).value_or(std::round(rate));
}

/// Lengths of all runs of `count` frames, divided by `count`, shortest first.
std::vector<double> runSpacings(std::span<const double> starts, std::size_t count) {
    std::vector<double> spacings;
    spacings.reserve(starts.size());
    for (std::size_t index = count; index < starts.size(); ++index)
        spacings.push_back((starts[index] - starts[index - count]) / static_cast<double>(count));
    std::ranges::sort(spacings);
    return spacings;
}

} // namespace

double nominalFrameRate(std::span<const double> starts) {
    if (starts.size() < 2) return 0;
    const double mean = (starts.back() - starts.front()) / static_cast<double>(starts.size() - 1);
    if (mean <= 0) return 0;
    if (starts.size() < kFewestToTell) return std::clamp(1 / mean, kScreenRate, kHighestRate);
    const std::vector<double> single = runSpacings(starts, 1);
    const auto isMean = [&](std::size_t index) { return std::abs(single[index] - mean) <= 0.03 * mean; };
    const std::size_t tenth = single.size() / 10;
    if (isMean(tenth) && isMean(single.size() - 1 - tenth)) return std::clamp(steadyRate(1 / mean), 1.0, kHighestRate);

    // Runs of a few frames, as single spacings of a live source scatter too much.
    const std::vector<double> runs = runSpacings(starts, std::min<std::size_t>(4, starts.size() - 1));
    const double rate = burstRate(1 / runs[runs.size() / 20]);
    return rate < kSlowestMotion ? kScreenRate : std::min(rate, kHighestRate);
}

MovieIndex::MovieIndex(std::vector<IndexedFrame> frames, std::int64_t end, Seconds tick)
    : m_frames(std::move(frames)),
      m_end(end),
      m_tick(tick.value) {
    std::ranges::stable_sort(m_frames, {}, &IndexedFrame::presentationTime);
    const auto repeated = std::ranges::unique(m_frames, {}, &IndexedFrame::presentationTime);
    m_frames.erase(repeated.begin(), repeated.end());
    // A container that does not say how long its last frame lasts: as long as the one before.
    if (m_frames.empty() || m_end > m_frames.back().presentationTime) return;
    const std::int64_t last = m_frames.back().presentationTime;
    const std::int64_t before = count() > 1 ? frame(count() - 2).presentationTime : last - 1;
    m_end = last + (last - before);
}

SourceTime MovieIndex::startOf(std::int64_t number) const {
    return SourceTime(static_cast<double>(frame(number).presentationTime) * m_tick);
}

SourceTime MovieIndex::endOf(std::int64_t number) const {
    return number + 1 < count() ? startOf(number + 1) : SourceTime(static_cast<double>(m_end) * m_tick);
}

std::int64_t MovieIndex::numberAt(SourceTime time) const {
    const auto ticks = static_cast<std::int64_t>(std::floor((time.value + kTimeTolerance) / m_tick));
    const auto after = std::ranges::upper_bound(m_frames, ticks, {}, &IndexedFrame::presentationTime);
    return std::max<std::int64_t>(0, after - m_frames.begin() - 1);
}

std::optional<std::int64_t> MovieIndex::numberOf(std::int64_t presentationTime) const {
    const auto found = std::ranges::lower_bound(m_frames, presentationTime, {}, &IndexedFrame::presentationTime);
    if (found == m_frames.end() || found->presentationTime != presentationTime) return std::nullopt;
    return found - m_frames.begin();
}

std::int64_t MovieIndex::keyFrameFor(std::int64_t number) const {
    while (number > 0 && !frame(number).isKeyFrame) --number;
    return number;
}

double MovieIndex::nominalFrameRate() const {
    std::vector<double> starts;
    starts.reserve(m_frames.size());
    for (std::int64_t number = 0; number < count(); ++number) starts.push_back(startOf(number).value);
    return morvelin::nominalFrameRate(starts);
}

} // namespace morvelin
