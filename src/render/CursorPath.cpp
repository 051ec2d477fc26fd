#include "render/CursorPath.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "core/base/Smoothstep.h"

namespace morvelin {

namespace {

constexpr double kGridRate = 60;                  ///< places a second
constexpr Seconds kWidestSigma = 0.3_s;           ///< at a smoothing of 1
constexpr Seconds kDragSigma = 0.015_s;           ///< follows the hand
constexpr Seconds kDragMargin = 0.12_s;           ///< around a drag in which the smoothing comes back
constexpr Seconds kNarrowestSigma{1.0 / 240};     ///< below it the filter does nothing at this rate
constexpr Seconds kLongestTrack = 7 * 86'400.0_s; ///< a longer one is a damaged file; it isn't worth a grid

struct Sample {
    SourceTime t;
    double x = 0;
    double y = 0;
};

/// The two axes of a path on the 60 Hz grid that starts at `start`.
struct Grid {
    SourceTime start;
    std::vector<double> xs;
    std::vector<double> ys;

    std::size_t size() const { return xs.size(); }
    double indexOf(SourceTime t) const { return (t - start).value * kGridRate; }
    /// The nearest grid place at or before `t`.
    std::size_t floorIndex(SourceTime t) const { return clampedIndex(std::floor(indexOf(t))); }
    std::size_t ceilIndex(SourceTime t) const { return clampedIndex(std::ceil(indexOf(t))); }

private:
    std::size_t clampedIndex(double index) const {
        return static_cast<std::size_t>(std::clamp(index, 0.0, static_cast<double>(size() - 1)));
    }
};

/// Events in time order; of those of one moment the last.
std::vector<Sample> samplesOf(std::span<const CursorEvent> events) {
    std::vector<Sample> samples;
    samples.reserve(events.size());
    for (const CursorEvent& event : events) {
        if (!samples.empty() && samples.back().t == event.timestamp) samples.pop_back();
        samples.push_back({event.timestamp, event.x, event.y});
    }
    return samples;
}

Grid resampled(const std::vector<Sample>& samples) {
    Grid grid{samples.front().t, {}, {}};
    const double steps = std::ceil((samples.back().t - samples.front().t).value * kGridRate);
    const auto count = std::max<std::size_t>(2, static_cast<std::size_t>(steps) + 1);
    grid.xs.reserve(count);
    grid.ys.reserve(count);
    std::size_t next = 1;
    for (std::size_t i = 0; i < count; ++i) {
        const SourceTime t = grid.start + Seconds(static_cast<double>(i) / kGridRate);
        while (next + 1 < samples.size() && samples[next].t <= t) ++next;
        const Sample& left = samples[next - 1];
        const Sample& right = samples[next];
        const double s = std::clamp((t - left.t) / (right.t - left.t), 0.0, 1.0);
        grid.xs.push_back(std::lerp(left.x, right.x, s));
        grid.ys.push_back(std::lerp(left.y, right.y, s));
    }
    return grid;
}

/// For each grid place how wide the filter is, in seconds: `sigma`, but close to the hand in and around drags.
std::vector<double> localSigmas(const Grid& grid, Seconds sigma, const std::vector<CursorHold>& drags) {
    std::vector<double> weights(grid.size(), 0.0);
    for (const CursorHold& drag : drags) {
        const std::size_t last = grid.ceilIndex(drag.end + kDragMargin);
        for (std::size_t i = grid.floorIndex(drag.start - kDragMargin); i <= last; ++i) {
            const SourceTime t = grid.start + Seconds(static_cast<double>(i) / kGridRate);
            const Seconds away = std::max({drag.start - t, t - drag.end, 0_s});
            if (away < kDragMargin) weights[i] = std::max(weights[i], smoothstep(1 - away / kDragMargin));
        }
    }
    for (double& weight : weights) weight = sigma.value + (kDragSigma - sigma).value * weight;
    return weights;
}

/// Half of a Gaussian kernel in steps of the grid, the centre first.
class Kernel {
public:
    /// The kernel for `sigma` seconds, made anew only when the width differs from the one before.
    const std::vector<double>& of(double sigma) {
        if (sigma == m_sigma) return m_half;
        m_sigma = sigma;
        const double width = std::max(sigma, kNarrowestSigma.value);
        m_half.resize(static_cast<std::size_t>(width * 3 * kGridRate + 1e-9) + 1);
        for (std::size_t k = 0; k < m_half.size(); ++k) {
            const double away = static_cast<double>(k) / kGridRate;
            m_half[k] = std::exp(-away * away / (2 * width * width));
        }
        m_sum = 2 * std::accumulate(m_half.begin(), m_half.end(), 0.0) - m_half[0];
        return m_half;
    }
    /// Of all weights of the kernel last asked for, both sides together.
    double sum() const { return m_sum; }

private:
    double m_sigma = std::numeric_limits<double>::quiet_NaN();
    double m_sum = 1;
    std::vector<double> m_half;
};

/// One filtered place near an end of the grid: the part of the window inside the grid counts.
NormalizedPoint filteredAtEdge(const Grid& grid, const std::vector<double>& half, std::size_t i) {
    const std::size_t first = i - std::min(i, half.size() - 1);
    const std::size_t last = std::min(i + half.size() - 1, grid.size() - 1);
    NormalizedPoint total{0, 0};
    double sum = 0;
    for (std::size_t k = first; k <= last; ++k) {
        const double weight = half[k < i ? i - k : k - i];
        total.x += weight * grid.xs[k];
        total.y += weight * grid.ys[k];
        sum += weight;
    }
    return {total.x / sum, total.y / sum};
}

/// Gaussian filter of both axes whose width changes from place to place.
Grid filtered(const Grid& grid, const std::vector<double>& sigmas) {
    Grid result{grid.start, std::vector<double>(grid.size()), std::vector<double>(grid.size())};
    Kernel kernel;
    for (std::size_t i = 0; i < grid.size(); ++i) {
        const std::vector<double>& half = kernel.of(sigmas[i]);
        NormalizedPoint place{half[0] * grid.xs[i], half[0] * grid.ys[i]};
        if (i + 1 < half.size() || i + half.size() > grid.size()) {
            place = filteredAtEdge(grid, half, i);
        } else {
            for (std::size_t k = 1; k < half.size(); ++k) {
                place.x += half[k] * (grid.xs[i - k] + grid.xs[i + k]);
                place.y += half[k] * (grid.ys[i - k] + grid.ys[i + k]);
            }
            place = {place.x / kernel.sum(), place.y / kernel.sum()};
        }
        result.xs[i] = place.x;
        result.ys[i] = place.y;
    }
    return result;
}

/// Moves a smoothed path onto the places of the clicks.
class Pinning {
public:
    Pinning(Grid& path, const std::vector<double>& sigmas) : m_path(path), m_filtered(path), m_sigmas(sigmas) {}

    void apply(const std::vector<CursorHold>& pins) {
        for (const CursorHold& pin : pins)
            // The path holds over whole grid steps, so that it is exact at the click's own time between two places.
            m_places.push_back({pin, m_path.floorIndex(pin.start), m_path.ceilIndex(pin.end)});
        for (std::size_t i = 0; i < m_places.size(); ++i) lead(i);
        for (const Place& place : m_places)
            for (std::size_t k = place.first; k <= place.last; ++k) {
                m_path.xs[k] = place.pin.x;
                m_path.ys[k] = place.pin.y;
            }
    }

private:
    struct Place {
        CursorHold pin;
        std::size_t first = 0; ///< grid places that are held
        std::size_t last = 0;
    };

    /// Bends the path towards a pin before it and back after it.
    void lead(std::size_t index) {
        const Place& place = m_places[index];
        const double never = std::numeric_limits<double>::infinity();
        const double gapBefore = index == 0 ? never : steps(m_places[index - 1].last, place.first);
        const double gapAfter = index + 1 == m_places.size() ? never : steps(place.last, m_places[index + 1].first);
        bend(place, place.first, -1, width(place.first, gapBefore));
        bend(place, place.last, +1, width(place.last, gapAfter));
    }

    static double steps(std::size_t from, std::size_t to) {
        return static_cast<double>(to) - static_cast<double>(from);
    }

    /// How far a pin's pull reaches, in grid steps; two steps next to the other pin are left to that one.
    double width(std::size_t place, double gap) const {
        const double wanted = std::max(2.5 * m_sigmas[place] * kGridRate, 1.0);
        return std::min(wanted, std::max(0.0, gap - 2));
    }

    void bend(const Place& place, std::size_t from, int direction, double reach) {
        const double errorX = place.pin.x - m_filtered.xs[from];
        const double errorY = place.pin.y - m_filtered.ys[from];
        for (std::size_t k = 1; static_cast<double>(k) < reach; ++k) {
            if (direction < 0 ? k > from : from + k >= m_path.size()) return;
            const double weight = (1 + std::cos(M_PI * static_cast<double>(k) / reach)) / 2;
            const std::size_t at = direction < 0 ? from - k : from + k;
            m_path.xs[at] += errorX * weight;
            m_path.ys[at] += errorY * weight;
        }
    }

    Grid& m_path;
    const Grid m_filtered;
    const std::vector<double>& m_sigmas;
    std::vector<Place> m_places;
};

} // namespace

CursorPath CursorPath::make(std::span<const CursorEvent> events, double smoothing, CaptureSize captureSize) {
    std::vector<CursorEvent> sorted;
    if (!std::ranges::is_sorted(events, {}, &CursorEvent::timestamp)) {
        sorted.assign(events.begin(), events.end());
        std::ranges::stable_sort(sorted, {}, &CursorEvent::timestamp);
        events = sorted;
    }
    const std::vector<Sample> samples = samplesOf(events);
    const Seconds sigma = kWidestSigma * std::clamp(smoothing, 0.0, 1.0);

    CursorPath path;
    const bool isSmooth = sigma > 0_s && samples.size() >= 2 && samples.back().t - samples.front().t <= kLongestTrack;
    if (!isSmooth) {
        for (const Sample& sample : samples) {
            path.m_times.push_back(sample.t);
            path.m_xs.push_back(sample.x);
            path.m_ys.push_back(sample.y);
        }
        return path;
    }

    const Grid raw = resampled(samples);
    const std::vector<double> sigmas = localSigmas(raw, sigma, cursorDrags(events, captureSize));
    Grid smooth = filtered(raw, sigmas);
    Pinning(smooth, sigmas).apply(cursorPins(events, captureSize));

    path.m_isLinear = false;
    path.m_startTime = smooth.start;
    path.m_xs = std::move(smooth.xs);
    path.m_ys = std::move(smooth.ys);
    return path;
}

std::optional<NormalizedPoint> CursorPath::position(SourceTime t) const {
    if (m_xs.empty()) return std::nullopt;
    std::size_t left = 0;
    double s = 0;
    if (m_isLinear) {
        const auto after = std::ranges::upper_bound(m_times, t);
        if (after == m_times.begin()) return NormalizedPoint{m_xs.front(), m_ys.front()};
        if (after == m_times.end()) return NormalizedPoint{m_xs.back(), m_ys.back()};
        left = static_cast<std::size_t>(after - m_times.begin()) - 1;
        s = (t - m_times[left]) / (m_times[left + 1] - m_times[left]);
    } else {
        const double index = (t - m_startTime).value * kGridRate;
        if (!(index > 0)) return NormalizedPoint{m_xs.front(), m_ys.front()};
        if (index >= static_cast<double>(m_xs.size() - 1)) return NormalizedPoint{m_xs.back(), m_ys.back()};
        left = static_cast<std::size_t>(index);
        s = index - std::floor(index);
    }
    return NormalizedPoint{std::lerp(m_xs[left], m_xs[left + 1], s), std::lerp(m_ys[left], m_ys[left + 1], s)};
}

} // namespace morvelin
