// Records the pointer apart from the picture: where it is 30 times a second, and each press and release. One a take.
#pragma once

#include <optional>
#include <vector>

#include "capture/CursorShapeRecorder.h"
#include "core/CursorEvent.h"
#include "core/base/EventLoop.h"
#include "platform/Pointer.h"

namespace morvelin {

/// Times are the loop's clock. All on the loop's thread.
class CursorTracker {
public:
    static constexpr Seconds kSampleInterval{1.0 / 30};

    CursorTracker(EventLoop& loop, PointerSource& pointer);

    /// `target` is the captured area in desktop pixels; `startUptime` is time 0 of the track. The recorder, if any, must
    /// live until `stop`.
    void start(const PixelBox& target, HostTime startUptime, CursorShapeRecorder* shapeRecorder);
    void pause(HostTime now);
    void resume(HostTime now);
    /// The samples in time order.
    std::vector<CursorEvent> stop();

    [[nodiscard]] bool isTracking() const { return m_isTracking; }

private:
    /// Samples in here are dropped; `end` is infinite while the pause lasts.
    struct PausedSpan {
        HostTime start;
        HostTime end;
    };
    struct Sample {
        HostTime time;
        DesktopPoint location;
        CursorEventType event = CursorEventType::Move;
        std::optional<MouseButton> button;
        std::optional<std::int64_t> clickCount;
    };

    void poll(HostTime time);
    void record(const Sample& sample);
    [[nodiscard]] std::optional<SourceTime> sourceTime(HostTime time) const;
    void insert(const CursorEvent& event);

    EventLoop& m_loop;
    PointerSource& m_pointer;
    EventLoop::Timer m_eventMonitor;
    EventLoop::Timer m_pollTimer;
    std::optional<HostTime> m_startUptime;
    std::vector<CursorEvent> m_events;
    bool m_isTracking = false;
    bool m_isPaused = false;
    std::vector<PausedSpan> m_pauses;
    PixelBox m_trackingRect;
    CursorShapeRecorder* m_shapeRecorder = nullptr;
};

} // namespace morvelin
