#include "platform/x11/ButtonMonitor.h"

#include <array>

#include <pthread.h>

namespace morvelin {

namespace {

constexpr std::uint8_t kEventNumber = 0x7f;

/// The wheel speaks as buttons, one for each direction: those are no clicks.
constexpr bool isWheel(std::uint32_t button) { return button >= 4 && button <= 7; }

constexpr MouseButton buttonNumbered(std::uint32_t number) {
    return number == 1 ? MouseButton::Left : number == 3 ? MouseButton::Right : MouseButton::Other;
}

} // namespace

Result<std::unique_ptr<ButtonMonitor>, ScreenError> ButtonMonitor::start(const std::string& display, Action action) {
    auto connection = X11Connection::open(display);
    if (!connection) return passOn(std::move(connection));
    if (!connection->hasExtension(xcb_input_id)) return failure(connection->lacks("XInput"));
    std::unique_ptr<ButtonMonitor> monitor(new ButtonMonitor(std::move(*connection), std::move(action)));
    if (!monitor->select()) return failure(monitor->m_connection.lacks("XInput 2"));
    monitor->m_thread = std::jthread([raw = monitor.get()](const std::stop_token& stop) { raw->listen(stop); });
    return monitor;
}

ButtonMonitor::ButtonMonitor(X11Connection connection, Action action)
    : m_connection(std::move(connection)),
      m_action(std::move(action)),
      m_inputOpcode(xcb_get_extension_data(m_connection.get(), &xcb_input_id)->major_opcode) {}

ButtonMonitor::~ButtonMonitor() {
    m_thread.request_stop();
    m_wakeUp.ring();
}

/// Asks for raw events of all pointers. From version 2.1 on they come also while another client holds a grab.
bool ButtonMonitor::select() {
    const auto version = owned(xcb_input_xi_query_version_reply(
        m_connection.get(), xcb_input_xi_query_version(m_connection.get(), 2, 2), nullptr));
    if (!version || version->major_version < 2) return false;

    struct Mask {
        xcb_input_event_mask_t head;
        std::uint32_t events;
    };
    const Mask mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                    XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE};
    const auto selected = xcb_input_xi_select_events_checked(m_connection.get(), m_connection.root(), 1, &mask.head);
    if (owned(xcb_request_check(m_connection.get(), selected)) != nullptr) return false;
    readButtonMapping();
    return true;
}

void ButtonMonitor::listen(const std::stop_token& stop) {
    pthread_setname_np(pthread_self(), "morvelin.button");
    while (!stop.stop_requested() && m_connection.isAlive()) {
        while (const auto event = m_connection.poll()) handle(*event);
        waitFor(m_connection.descriptor(), m_wakeUp, std::nullopt);
    }
}

void ButtonMonitor::handle(const xcb_generic_event_t& event) {
    if ((event.response_type & kEventNumber) == XCB_MAPPING_NOTIFY) readButtonMapping();
    if ((event.response_type & kEventNumber) != XCB_GE_GENERIC) return;
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    if (generic.extension != m_inputOpcode) return;
    const auto& raw = reinterpret_cast<const xcb_input_raw_button_press_event_t&>(event);
    if (generic.event_type == XCB_INPUT_RAW_BUTTON_PRESS) handleButton(raw, CursorEventType::MouseDown);
    if (generic.event_type == XCB_INPUT_RAW_BUTTON_RELEASE) handleButton(raw, CursorEventType::MouseUp);
}

void ButtonMonitor::handleButton(const xcb_input_raw_button_press_event_t& event, CursorEventType type) {
    const std::uint32_t button = logicalButton(event.detail);
    if (button == 0 || isWheel(button)) return;
    const HostTime time = m_clock.hostTime(event.time, hostNow());
    // Raw events carry no place; the server knows it best, and this thread asks at once.
    const auto pointer = owned(xcb_query_pointer_reply(
        m_connection.get(), xcb_query_pointer(m_connection.get(), m_connection.root()), nullptr));
    if (!pointer) return;
    const DesktopPoint location{static_cast<double>(pointer->root_x), static_cast<double>(pointer->root_y)};
    const std::int64_t count = type == CursorEventType::MouseDown ? m_clicks.press(button, time, location)
                                                                  : m_clicks.release(button);
    m_action({time, location, type, buttonNumbered(button), count});
}

/// Raw events number the buttons as the device does; a left-handed desktop swaps them afterwards.
void ButtonMonitor::readButtonMapping() {
    const auto reply = owned(
        xcb_get_pointer_mapping_reply(m_connection.get(), xcb_get_pointer_mapping(m_connection.get()), nullptr));
    if (!reply) return;
    const std::uint8_t* map = xcb_get_pointer_mapping_map(reply.get());
    m_buttonMapping.assign(map, map + xcb_get_pointer_mapping_map_length(reply.get()));
}

std::uint32_t ButtonMonitor::logicalButton(std::uint32_t physical) const {
    return physical >= 1 && physical <= m_buttonMapping.size() ? m_buttonMapping[physical - 1] : physical;
}

} // namespace morvelin
