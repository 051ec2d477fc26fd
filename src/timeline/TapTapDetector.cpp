#include "timeline/TapTapDetector.h"

#include <algorithm>
#include <cmath>

#include "timeline/ClickPings.h"
#include "timeline/Tolerance.h"

namespace morvelin {

namespace {

/// One walk along a pointer track in time order, with the gesture under way.
class TapTapWalk {
public:
    using Config = TapTapDetector::Config;
    using Detection = TapTapDetector::Detection;

    explicit TapTapWalk(const Config& config)
        : m_config(config),
          m_clock({config.maxGestureDuration, config.pauseResetDuration, config.stationaryEpsilon}) {}

    void press(SourceTime t) { m_clock.press(t); }

    /// The gesture that this sample completes, if any.
    std::optional<Detection> move(const PointerSample& sample) {
        const PointerSample previous = m_clock.latest();
        if (m_restartsNext || m_clock.breaksOff(sample)) {
            restart(sample);
            return std::nullopt;
        }
        const double dx = sample.x - previous.x;
        if (!atLeast(std::abs(dx), m_config.jitterEpsilon)) {
            m_runBox.extend(sample);
            m_box.extend(sample);
            return std::nullopt;
        }
        const Direction direction = dx < 0 ? Direction::Left : Direction::Right;
        if (m_direction && *m_direction != direction) {
            endRun(sample);
            m_run = 0;
            m_runBox = GestureBox(previous);
        }
        m_direction = direction;
        m_run += std::abs(dx);
        m_runBox.extend(sample);
        return m_swings >= m_config.requiredSwings ? judge(sample) : std::nullopt;
    }

private:
    enum class Direction { Left, Right };

    void restart(const PointerSample& sample) {
        m_clock.restart(sample);
        m_restartsNext = false;
        m_swings = 0;
        m_direction.reset();
        m_run = 0;
        m_runBox = m_box = GestureBox(sample);
    }

    /// A run has turned round. The first is how the pointer came to the spot, so the gesture's box leaves it out.
    void endRun(const PointerSample& sample) {
        if (atLeast(m_run, m_config.minSwingWidth)) {
            if (++m_swings >= 2) m_box.extend(m_runBox);
        } else if (m_swings > 0)
            restart(sample);
    }

    std::optional<Detection> judge(const PointerSample& sample) {
        const double width = m_box.width();
        const double mostHeight = std::min(m_config.maxVerticalDriftAbsolute, m_config.maxVerticalDriftRatio * width);
        if (!atLeast(width, m_config.minSwingWidth) || !atMost(width, m_config.maxGestureWidth) ||
            !atMost(m_box.height(), mostHeight)) {
            restart(sample);
            return std::nullopt;
        }
        m_restartsNext = true;
        const Detection detection{gestureZone(m_box, {m_config.zonePaddingFraction, m_config.zonePaddingMin}),
                                  m_clock.start(), m_box.center()};
        if (repeats(detection)) return std::nullopt;
        m_made.push_back(detection);
        return detection;
    }

    /// Somebody who goes on wagging about one spot means it once.
    [[nodiscard]] bool repeats(const Detection& detection) const {
        for (auto earlier = m_made.rbegin(); earlier != m_made.rend(); ++earlier) {
            if (atLeast(detection.startTime - earlier->startTime, m_config.minRepeatInterval)) return false;
            const double distance = lengthOf(detection.center.x - earlier->center.x,
                                             detection.center.y - earlier->center.y);
            if (!atLeast(distance, m_config.sameZoneDistance)) return true;
        }
        return false;
    }

    Config m_config;
    GestureClock m_clock;
    bool m_restartsNext = true;
    int m_swings = 0;
    std::optional<Direction> m_direction;
    double m_run = 0; ///< length of the current run
    GestureBox m_runBox;
    GestureBox m_box; ///< of the whole gesture
    std::vector<Detection> m_made;
};

} // namespace

std::vector<TapTapDetector::Detection> TapTapDetector::detect(std::span<const CursorEvent> events) const {
    return detect(PointerTrack::of(events));
}

std::vector<TapTapDetector::Detection> TapTapDetector::detect(const PointerTrack& track) const {
    return detectAlong(track, TapTapWalk(config));
}

TapTapKeyframe tapTapKeyframe(const TapTapDetector::Detection& detection, Seconds duration, IdSource& ids) {
    constexpr Seconds kLength = 0.9_s;
    constexpr double kSize = 0.12;
    const EditTime start = uncutEditTime(detection.startTime);
    EditTime end = start + kLength;
    if (duration > 0_s) end = std::min(end, EditTime(duration));
    return {ids.next(), start, end, detection.center.x, detection.center.y, kSize, std::nullopt};
}

} // namespace morvelin
