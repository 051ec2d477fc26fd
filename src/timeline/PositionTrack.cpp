#include "timeline/PositionTrack.h"

#include <algorithm>

#include "core/base/Smoothstep.h"
#include "timeline/Tolerance.h"

namespace morvelin {

PositionTrack::PositionTrack(std::vector<PositionKeyframe> positions) : m_keys(std::move(positions)) {
    std::ranges::stable_sort(m_keys, {}, &PositionKeyframe::time);
    m_times.reserve(m_keys.size());
    for (const PositionKeyframe& key : m_keys) m_times.push_back(key.time);
}

template <class PointOf>
NormalizedPoint PositionTrack::read(EditTime t, PointOf pointOf) const {
    if (m_keys.empty()) return {};
    if (t <= m_times.front()) return pointOf(m_keys.front());
    if (t >= m_times.back()) return pointOf(m_keys.back());

    const auto after = static_cast<std::size_t>(std::ranges::upper_bound(m_times, t) - m_times.begin());
    const NormalizedPoint right = pointOf(m_keys[after]);
    const Seconds gap = m_times[after] - m_times[after - 1];
    if (gap.value <= kTolerance) return right;
    const NormalizedPoint left = pointOf(m_keys[after - 1]);
    const double s = smoothstep((t - m_times[after - 1]) / gap);
    return {left.x + s * (right.x - left.x), left.y + s * (right.y - left.y)};
}

NormalizedPoint PositionTrack::positionAt(EditTime t) const {
    return read(t, [](const PositionKeyframe& key) { return NormalizedPoint{key.centerX, key.centerY}; });
}

NormalizedPoint PositionTrack::targetAt(EditTime t) const {
    return read(t, [](const PositionKeyframe& key) { return NormalizedPoint{key.targetX, key.targetY}; });
}

} // namespace morvelin
