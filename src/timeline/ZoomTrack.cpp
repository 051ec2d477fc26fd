#include "timeline/ZoomTrack.h"

#include <algorithm>

#include "core/base/Smoothstep.h"
#include "timeline/Tolerance.h"

namespace morvelin {

namespace {

EditTime rampEnd(const ZoomKeyframe& key) { return key.startTime + std::max(key.transitionTime, Seconds(kTolerance)); }

} // namespace

/// "Within 1e-9" is no ordering by itself, so keys that start together are gathered first and then ordered by length.
void sortRamps(std::vector<ZoomKeyframe>& zooms) {
    std::ranges::stable_sort(zooms, {}, &ZoomKeyframe::startTime);
    for (auto first = zooms.begin(); first != zooms.end();) {
        const auto apart = std::find_if(first, zooms.end(),
                                        [&](const auto& key) { return !atMost(key.startTime, first->startTime); });
        std::ranges::stable_sort(first, apart, {}, &ZoomKeyframe::transitionTime);
        first = apart;
    }
}

ZoomTrack::ZoomTrack(std::vector<ZoomKeyframe> zooms) : m_keys(std::move(zooms)) {
    std::ranges::stable_sort(m_keys, {}, &ZoomKeyframe::startTime);
    m_starts.reserve(m_keys.size());
    m_runningEnds.reserve(m_keys.size());
    for (const ZoomKeyframe& key : m_keys) {
        const EditTime end = rampEnd(key);
        m_starts.push_back(key.startTime);
        m_runningEnds.push_back(m_runningEnds.empty() ? end : std::max(m_runningEnds.back(), end));
    }

    m_corners.reserve(2 * m_keys.size());
    for (const ZoomKeyframe& key : m_keys)
        for (const EditTime time : {key.startTime, rampEnd(key)}) m_corners.push_back({time, zoomAt(time)});
    std::ranges::sort(m_corners, {}, &Corner::time);
}

double ZoomTrack::zoomAt(EditTime t) const {
    const auto started = static_cast<std::size_t>(std::ranges::upper_bound(m_starts, t) - m_starts.begin());
    if (started == 0) return 1;
    const auto running = static_cast<std::size_t>(std::ranges::upper_bound(m_runningEnds, t) - m_runningEnds.begin());
    if (running >= started) return m_keys[started - 1].zoomFactor;

    const ZoomKeyframe& ramp = m_keys[running];
    if (ramp.transitionTime.value <= kTolerance) return ramp.zoomFactor;
    const double from = running > 0 ? m_keys[running - 1].zoomFactor : 1;
    const double p = std::clamp((t - ramp.startTime) / ramp.transitionTime, 0.0, 1.0);
    const double eased = ramp.transitionType == ZoomTransitionType::Smooth ? smoothstep(p) : p;
    return from + eased * (ramp.zoomFactor - from);
}

double ZoomTrack::maxZoomInWindow(EditTime a, EditTime b) const {
    if (b < a) std::swap(a, b);
    double best = std::max(zoomAt(a), zoomAt(b));
    auto corner = std::ranges::upper_bound(m_corners, a, {}, &Corner::time);
    for (; corner != m_corners.end() && corner->time < b; ++corner) best = std::max(best, corner->zoom);
    return best;
}

} // namespace morvelin
