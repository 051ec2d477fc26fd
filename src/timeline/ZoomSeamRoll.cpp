#include "timeline/ZoomSeamRoll.h"

#include <algorithm>
#include <unordered_set>

#include "timeline/PositionKeySpacing.h"
#include "timeline/PositionTrack.h"
#include "timeline/TrackLimits.h"
#include "timeline/ZoomPositionKeys.h"
#include "timeline/ZoomTrack.h"

namespace morvelin::ZoomTrackEdits {

namespace {

/// The zooms on both sides of the boundary, after those between them were crossed.
struct Sides {
    std::size_t left, right;
    std::vector<std::size_t> crossed;
};

bool isBefore(EditTime t, EditTime other) { return !atLeast(t, other); }

/// A crossed zoom takes up at least its ramp and `hold`, so that a short one is not lost by a small move.
Sides walk(const std::vector<ZoomKeyframe>& zooms, std::size_t index, EditTime target, Seconds hold) {
    Sides sides{index - 1, index, {}};
    EditTime boundary = zooms[index].startTime;
    while (sides.left > 0 && isBefore(target, boundary)) {
        const ZoomKeyframe& zoom = zooms[sides.left];
        const EditTime begin = std::min(zoom.startTime, boundary - zoom.transitionTime - hold);
        if (!isBefore(target, begin)) break;
        boundary = zoom.startTime;
        sides.crossed.push_back(sides.left--);
    }
    while (sides.crossed.empty() || sides.right > index) {
        if (sides.right + 1 >= zooms.size()) break;
        const ZoomKeyframe& zoom = zooms[sides.right];
        const EditTime end = std::max(zooms[sides.right + 1].startTime, rampEnd(zoom) + hold);
        if (!isBefore(end, target)) break;
        sides.crossed.push_back(sides.right++);
    }
    return sides;
}

/// One roll that is known to be possible.
class Roll {
public:
    Roll(std::vector<ZoomKeyframe> zooms, std::vector<PositionKeyframe> positions, std::size_t index, Sides sides,
         EditTime timelineEnd)
        : m_zooms(std::move(zooms)),
          m_positions(std::move(positions)),
          m_sides(std::move(sides)),
          m_survivor(m_sides.right == index ? index : m_sides.left),
          m_end(timelineEnd) {
        std::ranges::stable_sort(m_positions, {}, &PositionKeyframe::time);
    }

    [[nodiscard]] std::optional<EditTime> stopped(EditTime target) const {
        const ZoomKeyframe& right = m_zooms[m_sides.right];
        const EditTime next = m_sides.right + 1 < m_zooms.size() ? m_zooms[m_sides.right + 1].startTime : m_end;
        const EditTime first = rampEnd(m_zooms[m_sides.left]);
        const EditTime last = next - std::max(kLeastRamp, right.transitionTime);
        if (!atMost(first, last)) return std::nullopt;
        return std::clamp(target, first, std::max(first, last));
    }

    SeamRoll land(EditTime seam, IdSource& ids) && {
        const UUID survivor = m_zooms[m_survivor].id;
        const NormalizedPoint focus = PositionTrack(m_positions).targetAt(holdOf(m_zooms, m_survivor, m_end).middle());
        SeamRoll roll{{}, {}, seam, m_zooms[m_sides.right].id, m_zooms[m_sides.left].id, {}, {}};
        for (const std::size_t crossed : m_sides.crossed) roll.absorbed.push_back(m_zooms[crossed].id);

        followBoundary(seam);
        m_zooms[m_sides.right].startTime = seam;
        m_zooms[m_sides.right].isManual = true;
        if (!roll.absorbed.empty()) {
            roll.survivorID = survivor;
            absorb(roll.absorbed, survivor, focus, ids);
        }
        roll.zooms = std::move(m_zooms);
        roll.positions = std::move(m_positions);
        return roll;
    }

private:
    void followBoundary(EditTime seam) {
        const ZoomKeyframe& left = m_zooms[m_sides.left];
        const ZoomKeyframe& right = m_zooms[m_sides.right];
        const EditTime leftHoldEnd = m_zooms[m_sides.left + 1].startTime;
        std::vector<PositionKeyframe> staying;
        std::vector<PositionKeyframe> coming;
        for (PositionKeyframe& key : m_positions) {
            const bool isEither = isOwnedBy(key, left.id) || isOwnedBy(key, right.id);
            const bool isAtRampEnd = isOwnedBy(key, right.id) && isWithin(key.time, kOnTime, rampEnd(right));
            const bool isAtBoundary = isWithin(key.time, kOnTime, leftHoldEnd) ||
                                      isWithin(key.time, kOnTime, right.startTime);
            if (staying.empty() || !isEither || !(isAtRampEnd || isAtBoundary)) {
                staying.push_back(std::move(key));
                continue;
            }
            key.time = isAtRampEnd ? seam + right.transitionTime : seam;
            coming.push_back(std::move(key));
        }
        m_positions = joined(std::move(staying), std::move(coming));
    }

    void absorb(const std::vector<UUID>& absorbed, const UUID& survivor, NormalizedPoint focus, IdSource& ids) {
        const std::unordered_set<UUID> gone(absorbed.begin(), absorbed.end());
        std::erase_if(m_zooms, [&](const auto& zoom) { return gone.contains(zoom.id); });
        const auto isGone = [&](const PositionKeyframe& key) {
            return key.zoomKeyframeID && gone.contains(*key.zoomKeyframeID);
        };
        if (!m_positions.empty() && isGone(m_positions.front())) m_positions.front().zoomKeyframeID.reset();
        std::erase_if(m_positions, isGone);

        const auto zoom = std::ranges::find(m_zooms, survivor, &ZoomKeyframe::id);
        zoom->isManual = true;
        const Hold hold = holdOf(m_zooms, static_cast<std::size_t>(zoom - m_zooms.begin()), m_end);
        if (ownsPositionKeys(*zoom)) m_positions = withPair(std::move(m_positions), *zoom, hold.to, focus, ids);
    }

    std::vector<ZoomKeyframe> m_zooms;
    std::vector<PositionKeyframe> m_positions;
    Sides m_sides;
    std::size_t m_survivor;
    EditTime m_end;
};

} // namespace

Result<SeamRoll, Refusal> rollSeam(std::vector<ZoomKeyframe> zooms, std::vector<PositionKeyframe> positions,
                                   const UUID& id, EditTime to, Seconds minimumHold, EditTime timelineEnd,
                                   IdSource& ids) {
    sortRamps(zooms);
    const auto zoom = std::ranges::find(zooms, id, &ZoomKeyframe::id);
    if (zoom == zooms.end()) return failure(Refusal{Refusal::Reason::UnknownZoom});
    if (zoom == zooms.begin() || isOpening(*zoom)) return failure(Refusal{Refusal::Reason::NoSeamBeforeFirstZoom});

    const auto index = static_cast<std::size_t>(zoom - zooms.begin());
    Sides sides = walk(zooms, index, to, std::max(kLeastHold, minimumHold));
    Roll roll(std::move(zooms), std::move(positions), index, std::move(sides), timelineEnd);
    const auto seam = roll.stopped(to);
    if (!seam) return failure(Refusal{Refusal::Reason::NoRoomForSeam});
    return std::move(roll).land(*seam, ids);
}

} // namespace morvelin::ZoomTrackEdits
