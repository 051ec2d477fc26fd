#include "timeline/PointerGesture.h"

#include <algorithm>

#include "timeline/Tolerance.h"

namespace morvelin {

PointerTrack PointerTrack::of(std::span<const CursorEvent> events) {
    PointerTrack track;
    track.moves.reserve(events.size());
    for (const CursorEvent& event : events) {
        switch (event.event) {
        case CursorEventType::Move: track.moves.push_back({event.timestamp, event.x, event.y}); break;
        case CursorEventType::MouseDown: track.presses.push_back(event.timestamp); break;
        case CursorEventType::MouseUp: break;
        }
    }
    if (!std::ranges::is_sorted(track.moves, {}, &PointerSample::t))
        std::ranges::stable_sort(track.moves, {}, &PointerSample::t);
    std::ranges::sort(track.presses);
    return track;
}

void GestureBox::extend(const PointerSample& point) { extend(GestureBox(point)); }

void GestureBox::extend(const GestureBox& other) {
    minX = std::min(minX, other.minX);
    minY = std::min(minY, other.minY);
    maxX = std::max(maxX, other.maxX);
    maxY = std::max(maxY, other.maxY);
}

NormalizedRect gestureZone(const GestureBox& box, ZonePadding padding) {
    constexpr double kLeastSide = 0.02;
    const double padX = std::max(padding.min, padding.fraction * box.width());
    const double padY = std::max(padding.min, padding.fraction * box.height());
    const double width = std::max(kLeastSide, box.width() + 2 * padX);
    const double height = std::max(kLeastSide, box.height() + 2 * padY);
    return {std::max(std::min(box.minX - padX, 1 - width), 0.0), std::max(std::min(box.minY - padY, 1 - height), 0.0),
            width, height};
}

void GestureClock::restart(const PointerSample& sample) {
    m_start = m_lastMoved = sample.t;
    m_latest = sample;
}

bool GestureClock::breaksOff(const PointerSample& sample) {
    const PointerSample previous = std::exchange(m_latest, sample);
    if (atLeast(lengthOf(sample.x - previous.x, sample.y - previous.y), m_limits.stationaryEpsilon))
        m_lastMoved = sample.t;
    return atLeast(sample.t - m_lastMoved, m_limits.pauseResetDuration) ||
           !atMost(sample.t - m_start, m_limits.maxGestureDuration) || m_lastPress >= m_start;
}

} // namespace morvelin
