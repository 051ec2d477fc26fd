#include "InputDevice.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <utility>

#include <fmt/core.h>
#include <xcb/xtest.h>

namespace morvelin {
namespace {

/// A reply of the server, freed with the C library as xcb asks.
struct Freed {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, Freed>;

template <typename T>
Reply<T> owned(T* reply) {
    return Reply<T>(reply);
}

/// The keysyms that scripts may name; the numbers are those of the X protocol's keysym table.
constexpr auto kNamedKeys = std::to_array<std::pair<std::string_view, xcb_keysym_t>>({
    {"ctrl", 0xffe3}, {"shift", 0xffe1},   {"alt", 0xffe9},       {"super", 0xffeb},     {"Return", 0xff0d},
    {"Tab", 0xff09},  {"Escape", 0xff1b},  {"space", 0x0020},     {"BackSpace", 0xff08}, {"Delete", 0xffff},
    {"Home", 0xff50}, {"Left", 0xff51},    {"Up", 0xff52},        {"Right", 0xff53},     {"Down", 0xff54},
    {"End", 0xff57},  {"Page_Up", 0xff55}, {"Page_Down", 0xff56}, {"F1", 0xffbe},        {"F2", 0xffbf},
    {"F3", 0xffc0},   {"F4", 0xffc1},      {"F5", 0xffc2},        {"F6", 0xffc3},        {"F7", 0xffc4},
    {"F8", 0xffc5},   {"F9", 0xffc6},      {"F10", 0xffc7},       {"F11", 0xffc8},       {"F12", 0xffc9},
});

constexpr xcb_keysym_t kShiftSymbol = 0xffe1;
constexpr uint8_t kWheelUp = 4;
constexpr uint8_t kWheelDown = 5;

/// Latin-1 characters are their own keysyms; the rest of Unicode stands in a range of its own.
xcb_keysym_t symbolOf(char32_t character) {
    if (character == '\n') return 0xff0d;
    if (character == '\t') return 0xff09;
    return character < 0x100 ? character : 0x01000000U + character;
}

} // namespace

std::expected<InputDevice, std::string> InputDevice::open(const std::string& display) {
    int screenNumber = 0;
    std::unique_ptr<xcb_connection_t, Disconnect> connection(
        xcb_connect(display.empty() ? nullptr : display.c_str(), &screenNumber));
    if (xcb_connection_has_error(connection.get()) != 0)
        return std::unexpected("There is no X display to play on; set DISPLAY.");

    const xcb_query_extension_reply_t* xtest = xcb_get_extension_data(connection.get(), &xcb_test_id);
    if (xtest == nullptr || xtest->present == 0)
        return std::unexpected("The X server takes no scripted input: it lacks the XTEST extension.");

    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
    for (; screenNumber > 0 && screens.rem > 1; --screenNumber) xcb_screen_next(&screens);
    InputDevice device(std::move(connection), screens.data->root);
    device.loadKeymap();
    return device;
}

InputDevice::InputDevice(std::unique_ptr<xcb_connection_t, Disconnect> connection, xcb_window_t root)
    : m_connection(std::move(connection)),
      m_root(root) {}

Spot InputDevice::position() const {
    xcb_connection_t* x = m_connection.get();
    const auto reply = owned(xcb_query_pointer_reply(x, xcb_query_pointer(x, m_root), nullptr));
    return reply ? Spot{static_cast<double>(reply->root_x), static_cast<double>(reply->root_y)} : Spot{};
}

void InputDevice::moveTo(Spot spot) { fake(XCB_MOTION_NOTIFY, 0, spot); }
void InputDevice::press(Button button) { fake(XCB_BUTTON_PRESS, static_cast<uint8_t>(button)); }
void InputDevice::release(Button button) { fake(XCB_BUTTON_RELEASE, static_cast<uint8_t>(button)); }
void InputDevice::keyDown(xcb_keycode_t code) { fake(XCB_KEY_PRESS, code); }
void InputDevice::keyUp(xcb_keycode_t code) { fake(XCB_KEY_RELEASE, code); }

void InputDevice::wheelUp() {
    fake(XCB_BUTTON_PRESS, kWheelUp);
    fake(XCB_BUTTON_RELEASE, kWheelUp);
}

void InputDevice::wheelDown() {
    fake(XCB_BUTTON_PRESS, kWheelDown);
    fake(XCB_BUTTON_RELEASE, kWheelDown);
}

void InputDevice::fake(uint8_t type, uint8_t detail, Spot spot) {
    xcb_test_fake_input(m_connection.get(), type, detail, XCB_CURRENT_TIME, m_root,
                        static_cast<int16_t>(std::lround(spot.x)), static_cast<int16_t>(std::lround(spot.y)), 0);
    xcb_flush(m_connection.get());
}

bool InputDevice::settle() {
    xcb_connection_t* x = m_connection.get();
    return owned(xcb_get_input_focus_reply(x, xcb_get_input_focus(x), nullptr)) != nullptr;
}

void InputDevice::loadKeymap() {
    xcb_connection_t* x = m_connection.get();
    const xcb_setup_t* setup = xcb_get_setup(x);
    m_firstKey = setup->min_keycode;
    const auto count = static_cast<uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    if (const auto map = owned(
            xcb_get_keyboard_mapping_reply(x, xcb_get_keyboard_mapping(x, m_firstKey, count), nullptr))) {
        const xcb_keysym_t* first = xcb_get_keyboard_mapping_keysyms(map.get());
        m_symbols.assign(first, first + xcb_get_keyboard_mapping_keysyms_length(map.get()));
        m_symbolsPerKey = map->keysyms_per_keycode;
    }
    m_shift = keystrokeOfSymbol(kShiftSymbol).value_or(Keystroke{}).code;
    m_netWmName = atom("_NET_WM_NAME");
}

std::expected<InputDevice::Keystroke, std::string> InputDevice::keystrokeOfSymbol(xcb_keysym_t symbol) const {
    for (const bool shifted : {false, true}) {
        for (size_t at = shifted ? 1 : 0; at < m_symbols.size(); at += m_symbolsPerKey) {
            if (m_symbols[at] == symbol)
                return Keystroke{static_cast<xcb_keycode_t>(m_firstKey + at / m_symbolsPerKey), shifted};
        }
    }
    return std::unexpected("the keyboard's map has no such key");
}

std::expected<InputDevice::Keystroke, std::string> InputDevice::keystrokeOf(char32_t character) const {
    return keystrokeOfSymbol(symbolOf(character));
}

std::expected<InputDevice::Keystroke, std::string> InputDevice::keystrokeNamed(const std::string& name) const {
    for (const auto& [known, symbol] : kNamedKeys)
        if (known == name) return keystrokeOfSymbol(symbol);
    if (name.size() == 1) return keystrokeOf(static_cast<unsigned char>(name.front()));
    return std::unexpected(fmt::format("\"{}\" is no key", name));
}

xcb_atom_t InputDevice::atom(std::string_view name) const {
    xcb_connection_t* x = m_connection.get();
    const auto reply = owned(
        xcb_intern_atom_reply(x, xcb_intern_atom(x, 0, static_cast<uint16_t>(name.size()), name.data()), nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::string InputDevice::title(xcb_window_t window) const {
    constexpr uint32_t kLongestTitle = 256; // in 32-bit units
    xcb_connection_t* x = m_connection.get();
    // Terminals of the old school have only the second of the two names.
    for (const xcb_atom_t property : {m_netWmName, xcb_atom_t{XCB_ATOM_WM_NAME}}) {
        const auto reply = owned(xcb_get_property_reply(
            x, xcb_get_property(x, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, kLongestTitle), nullptr));
        if (reply && reply->format == 8 && xcb_get_property_value_length(reply.get()) > 0)
            return {static_cast<const char*>(xcb_get_property_value(reply.get())),
                    static_cast<size_t>(xcb_get_property_value_length(reply.get()))};
    }
    return {};
}

bool InputDevice::showsWindow(const std::string& text) const {
    // A window manager puts a client one or two frames below the root.
    constexpr int kFrames = 3;
    return showsTitleBelow(m_root, text, kFrames);
}

bool InputDevice::showsTitleBelow(xcb_window_t window, const std::string& text, int depth) const {
    xcb_connection_t* x = m_connection.get();
    const auto tree = owned(xcb_query_tree_reply(x, xcb_query_tree(x, window), nullptr));
    if (!tree) return false;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        const auto state = owned(
            xcb_get_window_attributes_reply(x, xcb_get_window_attributes(x, children[i]), nullptr));
        const bool visible = state && state->map_state == XCB_MAP_STATE_VIEWABLE;
        if (visible && title(children[i]).find(text) != std::string::npos) return true;
        if (visible && depth > 1 && showsTitleBelow(children[i], text, depth - 1)) return true;
    }
    return false;
}

} // namespace morvelin
