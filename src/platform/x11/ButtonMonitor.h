// Hears every press and release of a pointer button, whichever window it goes to. Owned by a pointer source's listener.
#pragma once

#include <functional>
#include <thread>

#include <xcb/xinput.h>

#include "platform/Pointer.h"
#include "platform/x11/ClickCounter.h"
#include "platform/x11/ServerClock.h"
#include "platform/x11/HostClock.h"
#include "platform/x11/X11Connection.h"

namespace morvelin {

/// Reads XInput's raw events on a thread and a connection of its own: a busy main thread delays neither the question
/// where the pointer is, nor do other clients' grabs swallow a release.
class ButtonMonitor {
public:
    using Action = std::function<void(const PointerButtonEvent&)>;

    /// Calls `action` on the monitor's thread until the monitor goes.
    static Result<std::unique_ptr<ButtonMonitor>, ScreenError> start(const std::string& display, Action action);
    ~ButtonMonitor();
    ButtonMonitor(const ButtonMonitor&) = delete;
    ButtonMonitor& operator=(const ButtonMonitor&) = delete;

private:
    ButtonMonitor(X11Connection connection, Action action);

    bool select();
    void listen(const std::stop_token& stop);
    void handle(const xcb_generic_event_t& event);
    void handleButton(const xcb_input_raw_button_press_event_t& event, CursorEventType type);
    void readButtonMapping();
    [[nodiscard]] std::uint32_t logicalButton(std::uint32_t physical) const;

    X11Connection m_connection;
    Action m_action;
    std::uint8_t m_inputOpcode = 0;
    std::vector<std::uint8_t> m_buttonMapping; ///< logical number for each physical one, from 1 on
    ServerClock m_clock;
    ClickCounter m_clicks;
    WakeUp m_wakeUp;
    std::jthread m_thread; ///< last, so that it ends before what it uses
};

} // namespace morvelin
