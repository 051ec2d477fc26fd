#include "timeline/FocusDetector.h"

#include <algorithm>
#include <cmath>

#include "timeline/ClickPings.h"
#include "timeline/Tolerance.h"

namespace morvelin {

std::vector<FocusDetector::Detection> FocusDetector::detect(std::span<const CursorEvent> events) const {
    return detect(PointerTrack::of(events));
}

std::vector<FocusDetector::Detection> FocusDetector::detect(const PointerTrack& track) const {
    if (track.moves.size() <= kTooFewMoves) return {};
    return detectAlong(track, Walk(config));
}

FocusDetector::Walk::Walk(const Config& config)
    : m_config(config),
      m_clock({config.maxGestureDuration, config.pauseResetDuration, config.stationaryEpsilon}) {}

void FocusDetector::Walk::restart(const PointerSample& sample) {
    m_clock.restart(sample);
    m_restartsNext = false;
    m_anchor = sample;
    m_heading.reset();
    m_turned = 0;
    m_box = GestureBox(sample);
}

std::optional<FocusDetector::Detection> FocusDetector::Walk::move(const PointerSample& sample) {
    if (m_restartsNext || m_clock.breaksOff(sample)) {
        restart(sample);
        return std::nullopt;
    }
    const Step step{sample.x - m_anchor.x, sample.y - m_anchor.y};
    if (!atLeast(lengthOf(step.x, step.y), m_config.minStepDistance)) return std::nullopt;

    if (m_heading) {
        turn(std::atan2(m_heading->x * step.y - m_heading->y * step.x, m_heading->x * step.x + m_heading->y * step.y),
             sample);
        if (atLeast(std::abs(m_turned), m_config.requiredTurnRadians)) {
            m_restartsNext = true;
            return judge(sample.t);
        }
    } else {
        m_box.extend(sample);
    }
    m_heading = step;
    m_anchor = sample;
    return std::nullopt;
}

/// Counts a change of direction. Against the sense of rotation a little is forgiven; more starts a new gesture with
/// the step that turned.
void FocusDetector::Walk::turn(double angle, const PointerSample& sample) {
    const bool goesOn = m_turned == 0 || atMost(std::abs(angle), m_config.reversalDeadzone) || m_turned * angle > 0;
    if (!goesOn) {
        m_clock.startAt(m_anchor.t);
        m_box = GestureBox(m_anchor);
    }
    m_turned = goesOn ? m_turned + angle : 0;
    m_box.extend(sample);
}

std::optional<FocusDetector::Detection> FocusDetector::Walk::judge(SourceTime endTime) const {
    const auto [smaller, larger] = std::minmax({m_box.width(), m_box.height()});
    if (!atLeast(smaller, m_config.minZoneSize) || !atMost(larger, m_config.maxZoneSize)) return std::nullopt;
    return Detection{gestureZone(m_box, {m_config.zonePaddingFraction, m_config.zonePaddingMin}), m_clock.start(),
                     m_box.center(), endTime};
}

FocusKeyframe focusKeyframe(const FocusDetector::Detection& detection, Seconds duration, IdSource& ids) {
    constexpr Seconds kLength = 3_s;
    constexpr Seconds kFadeOut = 0.5_s;
    const EditTime start = uncutEditTime(detection.startTime);
    EditTime end = start + kLength;
    if (duration > 0_s) end = std::min(end, EditTime(duration));
    return {ids.next(), start, end, detection.rect, kFadeOut, std::nullopt, std::nullopt};
}

} // namespace morvelin
