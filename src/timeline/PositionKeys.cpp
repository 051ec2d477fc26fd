#include "timeline/PositionKeys.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <unordered_map>

#include "timeline/ClampCenter.h"
#include "timeline/PositionTrack.h"
#include "timeline/ZoomTrack.h"

namespace morvelin {

namespace {

constexpr double kZoomedIn = 1.000000001;
constexpr Seconds kWindowOfLastKey = 5_s;

/// Zooms that differ by less are the same, and so are times, in the ephemeral pass.
constexpr double kSame = 1e-6;
constexpr Seconds kSameTime{kSame};

bool differ(double zoom, double other) { return std::abs(zoom - other) > kSame; }

} // namespace

std::vector<PositionKeyframe> refitPositionKeys(std::vector<PositionKeyframe> positions,
                                                const std::vector<ZoomKeyframe>& zooms, double padding) {
    std::ranges::stable_sort(positions, {}, &PositionKeyframe::time);
    std::unordered_map<UUID, double> factors;
    for (const ZoomKeyframe& zoom : zooms) factors.emplace(zoom.id, zoom.zoomFactor);
    const ZoomTrack track(zooms);

    for (std::size_t i = 0; i < positions.size(); ++i) {
        PositionKeyframe& key = positions[i];
        const auto owner = key.zoomKeyframeID ? factors.find(*key.zoomKeyframeID) : factors.end();
        const EditTime until = i + 1 < positions.size() ? positions[i + 1].time : key.time + kWindowOfLastKey;
        const double zoom = owner != factors.end() && owner->second > kZoomedIn
                                ? owner->second
                                : track.maxZoomInWindow(key.time, until);
        const NormalizedPoint center = clampCenter({key.targetX, key.targetY}, zoom, padding);
        key.centerX = center.x;
        key.centerY = center.y;
    }
    return positions;
}

namespace {

/// One run of the ephemeral pass.
class EphemeralPass {
public:
    EphemeralPass(const std::vector<PositionKeyframe>& positions, std::vector<ZoomKeyframe> zooms, double padding,
                  std::optional<Seconds> duration, IdSource& ids)
        : m_explicit(stored(positions)),
          m_zooms(std::move(zooms)),
          m_padding(padding),
          m_duration(duration),
          m_ids(ids) {
        sortRamps(m_zooms);
    }

    std::vector<PositionKeyframe> run() && {
        seed();
        double previous = 1;
        for (std::size_t i = 0; i < m_zooms.size(); ++i) {
            if (differ(m_zooms[i].zoomFactor, previous) && m_zooms[i].transitionTime > kSameTime) pin(i);
            previous = m_zooms[i].zoomFactor;
        }
        return std::move(m_made);
    }

private:
    static std::vector<PositionKeyframe> stored(const std::vector<PositionKeyframe>& positions) {
        std::vector<PositionKeyframe> keys;
        std::ranges::copy_if(positions, std::back_inserter(keys), [](const auto& key) { return !key.isEphemeral; });
        return keys;
    }

    /// The first zoom-in would drag the view along all the way from the track's first key: hold it until the ramp.
    void seed() {
        const auto first = std::ranges::find_if(m_zooms, [](const auto& key) { return differ(key.zoomFactor, 1); });
        if (first == m_zooms.end() || !(first->transitionTime > kSameTime)) return;
        const EditTime start = first->startTime;
        if (!(start > EditTime(kSameTime)) || hasExplicitBetween(EditTime(kSameTime), start + kSameTime)) return;

        const auto& times = m_explicit.times();
        NormalizedPoint target;
        if (const auto after = std::ranges::upper_bound(times, start); after != times.begin()) {
            const auto latest = std::ranges::lower_bound(times, *std::prev(after)) - times.begin();
            const PositionKeyframe& key = m_explicit.keys()[static_cast<std::size_t>(latest)];
            target = {key.targetX, key.targetY};
        }
        append(start, target, 1);
    }

    /// Pins the view where ramp `i` ends and where its plateau ends, unless a stored key governs them.
    void pin(std::size_t i) {
        const ZoomKeyframe& ramp = m_zooms[i];
        const EditTime rampEnd = ramp.startTime + ramp.transitionTime;
        const EditTime windowStart = ramp.startTime + ramp.transitionTime / 3;
        const std::optional<EditTime> holdEnd = holdEndOf(i);
        if (hasExplicitBetween(windowStart - kSameTime, std::max(rampEnd, holdEnd.value_or(rampEnd)) + kSameTime))
            return;

        pinAt(rampEnd, ramp.zoomFactor);
        if (holdEnd && *holdEnd > rampEnd + kSameTime) pinAt(*holdEnd, ramp.zoomFactor);
    }

    [[nodiscard]] std::optional<EditTime> holdEndOf(std::size_t i) const {
        const double zoom = m_zooms[i].zoomFactor;
        const auto next = std::find_if(m_zooms.begin() + static_cast<std::ptrdiff_t>(i) + 1, m_zooms.end(),
                                       [&](const auto& key) { return differ(key.zoomFactor, zoom); });
        if (next != m_zooms.end()) return next->startTime;
        return m_duration ? std::optional(EditTime(*m_duration)) : std::nullopt;
    }

    void pinAt(EditTime time, double zoom) {
        const EditTime low = time - kSameTime;
        const EditTime high = time + kSameTime;
        const auto made = m_madeTimes.upper_bound(low);
        if (hasExplicitBetween(low, high) || (made != m_madeTimes.end() && *made < high)) return;
        append(time, m_explicit.targetAt(time), zoom);
    }

    /// Both bounds excluded.
    [[nodiscard]] bool hasExplicitBetween(EditTime low, EditTime high) const {
        const auto after = std::ranges::upper_bound(m_explicit.times(), low);
        return after != m_explicit.times().end() && *after < high;
    }

    void append(EditTime time, NormalizedPoint target, double zoom) {
        const NormalizedPoint center = clampCenter(target, zoom, m_padding);
        m_made.push_back({m_ids.next(), time, center.x, center.y, target.x, target.y, std::nullopt, true});
        m_madeTimes.insert(time);
    }

    PositionTrack m_explicit;
    std::vector<ZoomKeyframe> m_zooms;
    double m_padding;
    std::optional<Seconds> m_duration;
    IdSource& m_ids;
    std::vector<PositionKeyframe> m_made;
    std::set<EditTime> m_madeTimes;
};

} // namespace

std::vector<PositionKeyframe> ephemeralPositionKeys(const std::vector<PositionKeyframe>& positions,
                                                    std::vector<ZoomKeyframe> zooms, double padding,
                                                    std::optional<Seconds> duration, IdSource& ids) {
    return EphemeralPass(positions, std::move(zooms), padding, duration, ids).run();
}

std::vector<PositionKeyframe> cameraPositionKeys(const EditPayload& edit, Seconds duration) {
    return cameraPositionKeys(edit.positionKeyframes, edit.zoomKeyframes, edit.padding, duration);
}

std::vector<PositionKeyframe> cameraPositionKeys(const std::vector<PositionKeyframe>& stored,
                                                 const std::vector<ZoomKeyframe>& zooms, double padding,
                                                 Seconds duration) {
    SeededIdSource passingIds(0); // of keys that are never stored
    std::vector<PositionKeyframe> positions = refitPositionKeys(stored, zooms, padding);
    const auto pins = ephemeralPositionKeys(positions, zooms, padding, duration, passingIds);
    positions.insert(positions.end(), pins.begin(), pins.end());
    return positions;
}

} // namespace morvelin
