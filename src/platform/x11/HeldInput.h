// What our posted events hold on an X server: buttons and keys that are down, keycodes that are lent. Owned by the input
// back-end.
#pragma once

#include <compare>
#include <cstdint>
#include <initializer_list>
#include <set>

#include "platform/x11/X11Connection.h"

namespace morvelin {

/// An X server lets nothing go when a client dies. So what is held is also noted on the server's root window, and whoever
/// comes after a crash puts it back.
class HeldInput {
public:
    enum class Kind : std::uint8_t { Button, Key, SpareKeycode };
    struct Held {
        Kind kind = Kind::Button;
        std::uint8_t code = 0;

        auto operator<=>(const Held&) const = default;
    };

    /// Puts back what a crashed program of ours has left. The connection must outlive this and have XTEST.
    explicit HeldInput(const X11Connection& connection);
    HeldInput(const HeldInput&) = delete;
    HeldInput& operator=(const HeldInput&) = delete;
    /// Puts back all that is held.
    ~HeldInput();

    void press(const Held& what);
    void release(const Held& what);
    /// Presses in this order and releases in the reverse one. It all leaves for the server in one piece, so that it needs
    /// no note.
    void tap(std::initializer_list<Held> chord) const;
    /// Gives the keycode this symbol at every level.
    void lend(std::uint8_t keycode, std::uint32_t symbol);
    void takeBack(std::uint8_t keycode);
    /// Somebody else has given the keycode another symbol.
    void forget(std::uint8_t keycode);

private:
    void putBack(const Held& what) const;
    void putBackWhatACrashLeft() const;
    void note(const Held& what);
    void forget(const Held& what);
    void writeNotes() const;
    void push(const Held& what) const;
    void fake(std::uint8_t type, std::uint8_t detail) const;
    void setSymbol(std::uint8_t keycode, std::uint32_t symbol) const;

    const X11Connection& m_connection;
    xcb_atom_t m_notes = XCB_ATOM_NONE; ///< names the notes, and the selection that tells that their writer lives
    bool m_isNoting = false;
    std::set<Held> m_held;
};

} // namespace morvelin
