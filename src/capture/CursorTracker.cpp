#include "capture/CursorTracker.h"

#include <algorithm>
#include <limits>

#include "platform/WindowFit.h"

namespace morvelin {

namespace {

constexpr HostTime kEndless{std::numeric_limits<double>::infinity()};

double fraction(double position, int origin, int length) { return std::clamp((position - origin) / length, 0.0, 1.0); }

CursorShapeRecorder::Place placeOf(const DesktopPoint& point, const PixelBox& rect) {
    const bool isInside = point.x >= rect.x && point.x < rect.right() && point.y >= rect.y && point.y < rect.bottom();
    return isInside ? CursorShapeRecorder::Place::InsideCapture : CursorShapeRecorder::Place::OutsideCapture;
}

} // namespace

CursorTracker::CursorTracker(EventLoop& loop, PointerSource& pointer, ScreenSource& screen)
    : m_loop(loop),
      m_pointer(pointer),
      m_screen(screen) {}

void CursorTracker::start(const PixelBox& target, std::optional<WindowID> windowID, HostTime startUptime,
                          CursorShapeRecorder* shapeRecorder) {
    m_trackingRect = target;
    m_windowID = windowID;
    m_windowStartSize = {target.width, target.height};
    m_lastWindowRefreshUptime = m_loop.now();
    m_startUptime = startUptime;
    m_shapeRecorder = shapeRecorder;
    m_events.clear();
    m_pauses.clear();
    m_isPaused = false;
    m_isTracking = true;
    m_eventMonitor = m_pointer.onButton(m_loop, [this](const PointerButtonEvent& press) {
        record({press.time, press.location, press.event, press.button, press.clickCount});
    });
    m_pollTimer = m_loop.every(kSampleInterval, [this] { poll(m_loop.now()); });
    // Where the pointer is now stands for the movie's first frame, a moment ago.
    poll(startUptime);
}

void CursorTracker::pause(HostTime now) {
    if (!m_isTracking || m_isPaused) return;
    m_isPaused = true;
    m_pauses.push_back({now, kEndless});
}

void CursorTracker::resume(HostTime now) {
    if (!m_isPaused) return;
    m_isPaused = false;
    m_pauses.back().end = now;
}

std::vector<CursorEvent> CursorTracker::stop() {
    m_isTracking = false;
    m_pollTimer = {};
    m_eventMonitor = {};
    m_shapeRecorder = nullptr;
    m_startUptime.reset();
    return std::exchange(m_events, {});
}

void CursorTracker::poll(HostTime time) {
    if (!m_isTracking || m_isPaused) return;
    if (const auto location = m_pointer.location())
        record({time, *location, CursorEventType::Move, std::nullopt, std::nullopt});
}

void CursorTracker::record(const Sample& sample) {
    if (!m_isTracking) return;
    refreshWindow(sample);
    if (m_trackingRect.isEmpty()) return;
    const auto timestamp = sourceTime(sample.time);
    if (!timestamp) return;
    if (sample.event == CursorEventType::Move && m_shapeRecorder != nullptr)
        m_shapeRecorder->sample(*timestamp, placeOf(sample.location, m_trackingRect));
    insert({*timestamp, fraction(sample.location.x, m_trackingRect.x, m_trackingRect.width),
            fraction(sample.location.y, m_trackingRect.y, m_trackingRect.height), sample.event, sample.button,
            sample.clickCount});
}

/// Follows a window that was moved. One that is gone or hidden is taken to be where it was.
void CursorTracker::refreshWindow(const Sample& sample) {
    if (!m_windowID) return;
    const HostTime now = m_loop.now();
    if (sample.event == CursorEventType::Move && now - m_lastWindowRefreshUptime < kWindowRefreshInterval) return;
    m_lastWindowRefreshUptime = now;
    if (const auto frame = m_screen.windowFrame(*m_windowID); frame)
        m_trackingRect = desktopBoxOfPicture(*frame, m_windowStartSize);
}

/// The moment with the pauses before it taken out; nothing inside a pause or while no take runs.
std::optional<SourceTime> CursorTracker::sourceTime(HostTime time) const {
    if (!m_startUptime) return std::nullopt;
    Seconds pausedTotal;
    for (const PausedSpan& span : m_pauses) {
        if (time >= span.start && time < span.end) return std::nullopt;
        if (span.end <= time) pausedTotal += span.end - span.start;
    }
    return SourceTime(std::max(time - *m_startUptime - pausedTotal, Seconds(0)));
}

/// A press may be older than the last poll: it goes before it, behind all that are not later.
void CursorTracker::insert(const CursorEvent& event) {
    auto place = m_events.end();
    while (place != m_events.begin() && std::prev(place)->timestamp > event.timestamp) --place;
    m_events.insert(place, event);
    if (onEvent) onEvent(event);
}

} // namespace morvelin
