#include "timeline/PositionKeySpacing.h"

#include <algorithm>
#include <set>

#include "timeline/TrackLimits.h"

namespace morvelin {

std::vector<PositionKeyframe> joined(std::vector<PositionKeyframe> staying, std::vector<PositionKeyframe> coming) {
    std::set<EditTime> times;
    for (const PositionKeyframe& key : staying) times.insert(key.time);
    for (PositionKeyframe& key : coming) {
        const auto after = times.lower_bound(key.time);
        if (after != times.end() && areTooClose(*after, key.time)) continue;
        if (after != times.begin() && areTooClose(*std::prev(after), key.time)) continue;
        times.insert(key.time);
        staying.push_back(std::move(key));
    }
    std::ranges::stable_sort(staying, {}, &PositionKeyframe::time);
    return staying;
}

PositionKeyframe* keyTooCloseTo(std::vector<PositionKeyframe>& positions, EditTime time) {
    const auto after = std::ranges::lower_bound(positions, time, {}, &PositionKeyframe::time);
    PositionKeyframe* nearest = nullptr;
    if (after != positions.end() && areTooClose(after->time, time)) nearest = &*after;
    if (after == positions.begin()) return nearest;
    PositionKeyframe& before = *std::prev(after);
    const bool isNearer = nearest == nullptr || time - before.time <= nearest->time - time;
    return areTooClose(before.time, time) && isNearer ? &before : nearest;
}

} // namespace morvelin
