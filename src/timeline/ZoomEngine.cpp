#include "timeline/ZoomEngine.h"

#include <algorithm>

#include "timeline/ClampCenter.h"
#include "timeline/ClickGroups.h"
#include "timeline/Tolerance.h"
#include "timeline/ZoomTrack.h"

namespace morvelin {

namespace {

NormalizedPoint meanPosition(std::span<const ClickPing> clicks) {
    NormalizedPoint sum{0, 0};
    for (const ClickPing& click : clicks) sum = {sum.x + click.x, sum.y + click.y};
    const auto count = static_cast<double>(clicks.size());
    return {sum.x / count, sum.y / count};
}

/// One generation: writes both tracks, group after group.
class KeyWriter {
public:
    KeyWriter(const ZoomEngineConfig& config, const RampTiming& timing, ZoomTransitionType curve,
              std::optional<Seconds> duration, IdSource& ids)
        : m_config(config),
          m_timing(timing),
          m_curve(curve),
          m_duration(duration),
          m_ids(ids) {
        addZoom(EditTime(), 0_s, config.defaultZoomOut);
        m_tracks.position.push_back(PositionKeyframe::baseline(ids));
    }

    /// `next` is the group that follows, if any.
    void write(const ClickGroup& group, const ClickGroup* next) {
        if (!group.hasRamp()) return;
        const auto [zoomStart, transition] = group.plan;
        const EditTime rampEnd = zoomStart + transition;
        const UUID zoom = addZoom(zoomStart, transition, m_config.defaultZoomIn);
        closeHold(zoomStart);
        m_hold = Hold{meanPosition(group.clicks), zoom, rampEnd};
        aim(*m_hold, rampEnd);

        const std::optional<EditTime> out = zoomOutTime(group, next, rampEnd);
        if (!out || !atMost(rampEnd, *out)) return;
        closeHold(*out);
        addZoom(*out, m_timing.rampOut, m_config.defaultZoomOut);
    }

    ZoomTracks finish() && {
        if (m_duration) closeHold(EditTime(*m_duration));
        sortRamps(m_tracks.zoom);
        std::ranges::stable_sort(m_tracks.position, {}, &PositionKeyframe::time);
        return std::move(m_tracks);
    }

private:
    /// A zoomed-in view that has not been left yet.
    struct Hold {
        NormalizedPoint target;
        UUID zoom;
        EditTime since;
    };

    UUID addZoom(EditTime start, Seconds transition, double factor) {
        const UUID id = m_ids.next();
        m_tracks.zoom.push_back({id, start, transition, factor, m_curve, false});
        return id;
    }

    void aim(const Hold& hold, EditTime time) {
        const NormalizedPoint center = clampCenter(hold.target, m_config.defaultZoomIn, 0);
        m_tracks.position.push_back({m_ids.next(), std::max(time, EditTime()), center.x, center.y, hold.target.x,
                                     hold.target.y, hold.zoom, false});
    }

    /// A second key at the same target holds the view still, so that the move to the next one starts with its ramp.
    void closeHold(EditTime time) {
        if (m_hold && !atLeast(m_hold->since, time)) aim(*m_hold, time);
        m_hold.reset();
    }

    /// When the picture should go back out after `group`; nothing where it stays in.
    [[nodiscard]] std::optional<EditTime> zoomOutTime(const ClickGroup& group, const ClickGroup* next,
                                                      EditTime rampEnd) const {
        const EditTime idleAt = group.last() + m_timing.idle;
        if (next) {
            const bool isBackInTime = atMost(idleAt + m_timing.rampOut, next->plan.zoomStart);
            return isBackInTime ? std::optional(idleAt) : std::nullopt;
        }
        if (!m_duration) return std::nullopt;
        const EditTime latest = EditTime(*m_duration) - m_timing.rampOut;
        if (!atMost(std::max(group.last(), rampEnd), latest)) return std::nullopt;
        return std::min(idleAt, latest);
    }

    ZoomEngineConfig m_config;
    RampTiming m_timing;
    ZoomTransitionType m_curve;
    std::optional<Seconds> m_duration;
    IdSource& m_ids;
    ZoomTracks m_tracks;
    std::optional<Hold> m_hold;
};

} // namespace

ZoomTracks ZoomEngine::generateKeyframes(std::vector<ClickPing> clicks, const EditingSettings& settings,
                                         std::optional<Seconds> duration, IdSource& ids) const {
    std::ranges::stable_sort(clicks, {}, &ClickPing::time);
    if (duration && !(*duration > 0_s)) duration.reset();

    const RampTiming timing(settings);
    const std::vector<ClickGroup> groups = clickGroups(clicks, timing);
    KeyWriter writer(config, timing, settings.transitionCurve, duration, ids);
    for (std::size_t i = 0; i < groups.size(); ++i)
        writer.write(groups[i], i + 1 < groups.size() ? &groups[i + 1] : nullptr);
    return std::move(writer).finish();
}

} // namespace morvelin
