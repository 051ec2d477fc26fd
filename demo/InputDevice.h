// A pointer and a keyboard made of XTest events, which the X server treats as it treats a person's. Owned by the player.
#pragma once

#include "Story.h"

#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <vector>

#include <xcb/xcb.h>

namespace morvelin {

class InputDevice {
public:
    /// Connects to `display`, or to $DISPLAY where it is empty.
    static std::expected<InputDevice, std::string> open(const std::string& display);

    Spot position() const;
    void moveTo(Spot spot);
    void press(Button button);
    void release(Button button);
    /// One notch of the wheel; away from the person is up.
    void wheelUp();
    void wheelDown();

    /// Keycode of a character, with whether Shift is needed. Nothing where the keymap lacks it.
    struct Keystroke {
        xcb_keycode_t code = 0;
        bool shifted = false;
    };
    std::expected<Keystroke, std::string> keystrokeOf(char32_t character) const;
    /// Names as in "ctrl", "Return", "F5", or a single character.
    std::expected<Keystroke, std::string> keystrokeNamed(const std::string& name) const;
    void keyDown(xcb_keycode_t code);
    void keyUp(xcb_keycode_t code);
    xcb_keycode_t shiftKey() const { return m_shift; }

    /// Whether a window whose title contains `text` is on the screen.
    bool showsWindow(const std::string& text) const;

    /// Sends what is queued and waits until the server has seen it; false when the display is gone.
    bool settle();

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    InputDevice(std::unique_ptr<xcb_connection_t, Disconnect> connection, xcb_window_t root);

    void fake(uint8_t type, uint8_t detail, Spot spot = {});
    void loadKeymap();
    std::expected<Keystroke, std::string> keystrokeOfSymbol(xcb_keysym_t symbol) const;
    xcb_atom_t atom(std::string_view name) const;
    std::string title(xcb_window_t window) const;
    bool showsTitleBelow(xcb_window_t window, const std::string& text, int depth) const;

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    xcb_window_t m_root = 0;
    std::vector<xcb_keysym_t> m_symbols; // m_symbolsPerKey for each keycode from m_firstKey on
    size_t m_symbolsPerKey = 0;
    xcb_keycode_t m_firstKey = 0;
    xcb_keycode_t m_shift = 0;
    xcb_atom_t m_netWmName = 0;
};

} // namespace morvelin
