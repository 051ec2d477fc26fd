#include "platform/x11/X11InputPosting.h"

#include <array>
#include <cmath>
#include <string_view>
#include <thread>

#include <fmt/format.h>
#include <xcb/xtest.h>

namespace morvelin {

namespace {

constexpr std::uint8_t kEventNumber = 0x7f;

InputPostingError unavailable(std::string detail) { return {InputPostingError::Kind::Unavailable, std::move(detail)}; }

HeldInput::Held held(PointerButton button) {
    constexpr std::array<std::uint8_t, 3> kNumbers{1, 3, 2};
    return {HeldInput::Kind::Button, kNumbers[static_cast<std::size_t>(button)]};
}

HeldInput::Held held(WheelDirection direction) {
    return {HeldInput::Kind::Button, static_cast<std::uint8_t>(4 + static_cast<int>(direction))};
}

HeldInput::Held held(Key key) { return {HeldInput::Kind::Key, keycodeOf(key)}; }

xcb_intern_atom_cookie_t askForAtom(const X11Connection& connection, std::string_view name) {
    return xcb_intern_atom(connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
}

xcb_atom_t atomOf(const X11Connection& connection, xcb_intern_atom_cookie_t cookie) {
    const auto reply = owned(xcb_intern_atom_reply(connection.get(), cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace

Result<std::unique_ptr<X11InputPosting>, InputPostingError> X11InputPosting::connect(const std::string& display,
                                                                                     EventLoop& loop, Seconds loan) {
    auto connection = X11Connection::open(display);
    if (!connection) return failure(unavailable(connection.error().description()));
    if (!connection->hasExtension(xcb_test_id))
        return failure(unavailable(fmt::format("The X display “{}” takes no posted input: it lacks the XTEST "
                                               "extension. Start its server without switching that off.",
                                               connection->display())));
    return std::unique_ptr<X11InputPosting>(new X11InputPosting(std::move(*connection), loop, loan));
}

X11InputPosting::X11InputPosting(X11Connection connection, EventLoop& loop, Seconds loan)
    : m_connection(std::move(connection)),
      m_loop(loop),
      m_loan(loan),
      m_held(m_connection),
      m_keyboard(m_connection),
      m_spares(m_held, m_keyboard) {
    const auto activeWindow = askForAtom(m_connection, "_NET_ACTIVE_WINDOW");
    const auto windowManager = askForAtom(m_connection, "_NET_SUPPORTING_WM_CHECK");
    m_activeWindow = atomOf(m_connection, activeWindow);
    m_windowManager = atomOf(m_connection, windowManager);
}

X11InputPosting::~X11InputPosting() {
    // What was typed last may not have been looked up yet.
    const Seconds settling = m_connection.isAlive() ? m_spares.settlingTime(m_loop.now()) : 0_s;
    std::this_thread::sleep_for(std::chrono::duration<double>(settling.value));
}

Result<void, InputPostingError> X11InputPosting::check() {
    const auto answer = owned(
        xcb_get_input_focus_reply(m_connection.get(), xcb_get_input_focus(m_connection.get()), nullptr));
    readEvents();
    if (!m_connection.isAlive()) return failure(unavailable(m_connection.lost().description()));
    return {};
}

/// A layout that the user switches is read anew; our own loans are no news.
void X11InputPosting::readEvents() {
    bool hasLayoutChanged = false;
    while (const auto event = m_connection.poll()) {
        if ((event->response_type & kEventNumber) != XCB_MAPPING_NOTIFY) continue;
        const auto& mapping = reinterpret_cast<const xcb_mapping_notify_event_t&>(*event);
        if (mapping.request == XCB_MAPPING_POINTER) continue;
        const bool isOurs = mapping.count == 1 && m_spares.owns(mapping.first_keycode);
        hasLayoutChanged = hasLayoutChanged || !isOurs;
    }
    if (!hasLayoutChanged) return;
    m_keyboard.read();
    m_spares.layoutChanged(m_keyboard);
}

std::optional<DesktopPoint> X11InputPosting::location() {
    const auto reply = owned(xcb_query_pointer_reply(
        m_connection.get(), xcb_query_pointer(m_connection.get(), m_connection.root()), nullptr));
    if (!reply) return std::nullopt;
    return DesktopPoint{static_cast<double>(reply->root_x), static_cast<double>(reply->root_y)};
}

void X11InputPosting::moveTo(DesktopPoint place) {
    xcb_test_fake_input(m_connection.get(), XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, m_connection.root(),
                        static_cast<std::int16_t>(std::lround(place.x)),
                        static_cast<std::int16_t>(std::lround(place.y)), 0);
    posted();
}

void X11InputPosting::press(PointerButton button) {
    m_held.press(held(button));
    posted();
}

void X11InputPosting::release(PointerButton button) {
    m_held.release(held(button));
    posted();
}

void X11InputPosting::turnWheel(WheelDirection direction, int notches) {
    for (int notch = 0; notch < notches; ++notch) m_held.tap({held(direction)});
    posted();
}

void X11InputPosting::keyDown(Key key) {
    m_held.press(held(key));
    posted();
}

void X11InputPosting::keyUp(Key key) {
    m_held.release(held(key));
    posted();
}

std::optional<X11Keyboard::Keystroke> X11InputPosting::keystrokeNow(KeySymbol symbol,
                                                                    const X11Keyboard::State& state) const {
    const auto keystroke = m_keyboard.keystrokeOf(symbol);
    const bool isTheLayouts = keystroke && !m_spares.owns(keystroke->keycode);
    return isTheLayouts && state.isPlain ? keystroke : std::nullopt;
}

Result<void, InputPostingError> X11InputPosting::type(char32_t character) {
    const auto symbol = symbolOf(character);
    if (!symbol) return {};
    readEvents();
    const X11Keyboard::State state = m_keyboard.state();
    if (const auto keystroke = keystrokeNow(*symbol, state)) {
        tap(*keystroke, state);
        return {};
    }
    const auto keycode = m_spares.lend(*symbol, m_loop.now());
    if (!keycode)
        return failure(unavailable("The keyboard’s layout lacks a character of the text, and leaves no key code unused "
                                   "that could type it. Choose a smaller layout."));
    tap({*keycode, false}, state);
    constexpr Seconds kLook{0.25};
    m_takingBack = m_loop.every(kLook, [this] { takeBackWhenIdle(); });
    return {};
}

void X11InputPosting::posted() {
    m_connection.flush();
    m_lastPost = m_loop.now();
}

void X11InputPosting::takeBackWhenIdle() {
    if (m_loop.now() - m_lastPost < m_loan) return;
    m_spares.takeAllBack();
    m_connection.flush();
    m_takingBack = {};
}

/// Caps Lock is lifted for the moment.
void X11InputPosting::tap(const X11Keyboard::Keystroke& keystroke, const X11Keyboard::State& state) {
    const auto capsLock = state.isCapsLocked ? m_keyboard.capsLockKey() : std::nullopt;
    if (capsLock) m_held.tap({{HeldInput::Kind::Key, *capsLock}});
    const HeldInput::Held key{HeldInput::Kind::Key, keystroke.keycode};
    if (keystroke.isShifted)
        m_held.tap({held(Key::Shift), key});
    else
        m_held.tap({key});
    if (capsLock) m_held.tap({{HeldInput::Kind::Key, *capsLock}});
    posted();
}

Seconds X11InputPosting::settlingTime(char32_t character) {
    const auto symbol = symbolOf(character);
    if (!symbol) return {};
    readEvents();
    return keystrokeNow(*symbol, m_keyboard.state()) ? 0_s : m_spares.settlingTime(*symbol, m_loop.now());
}

bool X11InputPosting::hasWindowManager() const {
    const auto reply = owned(xcb_get_property_reply(
        m_connection.get(),
        xcb_get_property(m_connection.get(), 0, m_connection.root(), m_windowManager, XCB_ATOM_WINDOW, 0, 1), nullptr));
    return reply && reply->value_len == 1;
}

/// By way of the window manager, which knows about desktops and minimised windows, where there is one.
void X11InputPosting::focus(WindowID window) {
    xcb_connection_t* x = m_connection.get();
    if (hasWindowManager()) {
        constexpr std::uint32_t kOnTheUsersBehalf = 2;
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = m_activeWindow;
        message.data.data32[0] = kOnTheUsersBehalf;
        xcb_send_event(x, 0, m_connection.root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&message));
    } else {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(x, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        xcb_set_input_focus(x, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    }
    m_connection.flush();
}

} // namespace morvelin
