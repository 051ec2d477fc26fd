#include "timeline/TimeWarp.h"

#include <algorithm>
#include <cmath>

#include "timeline/FragmentMap.h"
#include "timeline/Tolerance.h"

namespace morvelin {

TimeWarp TimeWarp::removal(EditTime from, EditTime to, Seconds duration) {
    const EditTime end(duration);
    return TimeWarp({{EditTime(), from, EditTime(), from}, {from, to, from, from}, {to, end, from, from + (end - to)}});
}

TimeWarp TimeWarp::insertion(EditTime at, Seconds length, Seconds duration) {
    const EditTime end(duration);
    return TimeWarp({{EditTime(), at, EditTime(), at}, {at, end, at + length, end + length}});
}

TimeWarp TimeWarp::retiming(const FragmentMap& before, const FragmentMap& after) {
    std::vector<Stretch> stretches;
    for (std::size_t i = 0; i < before.spans().size(); ++i) {
        const auto& old = before.spans()[i];
        const auto& now = after.spans()[i];
        if (old.length > 0_s) stretches.push_back({old.start, old.end(), now.start, now.end()});
    }
    if (stretches.empty()) stretches.push_back({});
    return TimeWarp(std::move(stretches));
}

/// A stretch that keeps its length only shifts, so that times that need not change do not change by a bit.
EditTime TimeWarp::through(const Stretch& stretch, EditTime t) {
    const Seconds shift = stretch.newFrom - stretch.from;
    if (t <= stretch.from) return t + shift;
    if (t >= stretch.to) return t + (stretch.newTo - stretch.to);
    const Seconds length = stretch.to - stretch.from;
    const Seconds newLength = stretch.newTo - stretch.newFrom;
    if (std::abs((length - newLength).value) <= kTolerance) return t + shift;
    return stretch.newFrom + (t - stretch.from) * (newLength / length);
}

const TimeWarp::Stretch& TimeWarp::holding(EditTime t) const {
    const auto after = std::ranges::upper_bound(m_stretches, t + Seconds(kTolerance), {}, &Stretch::from);
    return after == m_stretches.begin() ? *after : *std::prev(after);
}

EditTime TimeWarp::at(EditTime t) const { return through(holding(t), t); }

EditTime TimeWarp::endAt(EditTime t) const {
    const auto it = std::ranges::lower_bound(m_stretches, t - Seconds(kTolerance), {}, &Stretch::to);
    return through(it == m_stretches.end() ? m_stretches.back() : *it, t);
}

bool TimeWarp::isRemoved(EditTime t) const {
    const Stretch& stretch = holding(t);
    return stretch.to > stretch.from && stretch.newTo <= stretch.newFrom && t < stretch.to;
}

EditTime TimeWarp::changesFrom() const {
    for (const Stretch& stretch : m_stretches) {
        if (stretch.newFrom != stretch.from || stretch.newTo != stretch.to) return stretch.from;
    }
    return m_stretches.back().to;
}

EditTime TimeWarp::newEnd() const { return m_stretches.back().newTo; }

} // namespace morvelin
