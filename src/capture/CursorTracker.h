// Records the pointer apart from the picture: where it is 30 times a second, and each press and release. One a take.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "capture/CursorShapeRecorder.h"
#include "core/CursorEvent.h"
#include "core/base/EventLoop.h"
#include "platform/Pointer.h"
#include "platform/Screen.h"

namespace morvelin {

/// Times are the loop's clock. All on the loop's thread.
class CursorTracker {
public:
    static constexpr Seconds kSampleInterval{1.0 / 30};
    static constexpr Seconds kWindowRefreshInterval{0.1};

    CursorTracker(EventLoop& loop, PointerSource& pointer, ScreenSource& screen);

    /// Told of each sample as it comes, which is not always the order of their times.
    std::function<void(const CursorEvent&)> onEvent;

    /// `target` is the captured area in desktop pixels, of a window where it is now; `startUptime` is time 0 of the track.
    /// The recorder, if any, must live until `stop`.
    void start(const PixelBox& target, std::optional<WindowID> windowID, HostTime startUptime,
               CursorShapeRecorder* shapeRecorder);
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
    void refreshWindow(const Sample& sample);
    [[nodiscard]] std::optional<SourceTime> sourceTime(HostTime time) const;
    void insert(const CursorEvent& event);

    EventLoop& m_loop;
    PointerSource& m_pointer;
    ScreenSource& m_screen;
    EventLoop::Timer m_eventMonitor;
    EventLoop::Timer m_pollTimer;
    std::optional<HostTime> m_startUptime;
    std::vector<CursorEvent> m_events;
    bool m_isTracking = false;
    bool m_isPaused = false;
    std::vector<PausedSpan> m_pauses;
    PixelBox m_trackingRect; ///< the part of the desktop that the movie stands for
    std::optional<WindowID> m_windowID;
    PixelSize
        m_windowStartSize; ///< of the window as the take began, which is the movie's; a window that grows is shrunk
    HostTime m_lastWindowRefreshUptime;
    CursorShapeRecorder* m_shapeRecorder = nullptr;
};

} // namespace morvelin
