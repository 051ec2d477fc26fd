// The keys of an X server's layout, and which keycodes it leaves unused. Owned by the input back-end.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/InputPosting.h"
#include "platform/x11/X11Connection.h"

namespace morvelin {

/// A symbol as the X protocol numbers what a key types.
using KeySymbol = std::uint32_t;

/// The symbol of a character; nothing for control characters that no key types.
[[nodiscard]] std::optional<KeySymbol> symbolOf(char32_t character);

/// The keycode of a key's place.
[[nodiscard]] std::uint8_t keycodeOf(Key key);

class X11Keyboard {
public:
    struct Keystroke {
        std::uint8_t keycode = 0;
        bool isShifted = false;
    };

    explicit X11Keyboard(const X11Connection& connection) : m_connection(connection) { read(); }

    /// Reads the layout anew.
    void read();

    /// How the layout's first group types the symbol, with no other modifier held.
    [[nodiscard]] std::optional<Keystroke> keystrokeOf(KeySymbol symbol) const;
    struct State {
        bool isPlain = false; ///< a keystroke types what the first group says: no modifier is held, no group chosen
        bool isCapsLocked = false; ///< which changes what is typed all the same
    };
    [[nodiscard]] State state() const;
    /// Nothing where the layout has no such key.
    [[nodiscard]] std::optional<std::uint8_t> capsLockKey() const;
    /// The keycode's first symbol; 0 where it has none.
    [[nodiscard]] KeySymbol symbolAt(std::uint8_t keycode) const;
    /// Keycodes that type nothing and modify nothing.
    [[nodiscard]] std::vector<std::uint8_t> unusedKeycodes() const;

private:
    const X11Connection& m_connection;
    std::uint8_t m_first = 0;
    std::size_t m_width = 1;               ///< symbols a keycode
    std::vector<KeySymbol> m_symbols;      ///< `m_width` for each keycode from `m_first` on
    std::vector<std::uint8_t> m_modifiers; ///< keycodes of the eight modifiers, equally many for each
};

} // namespace morvelin
