// Keycodes that the layout leaves unused, lent for a while to characters that it lacks. Owned by the input back-end.
#pragma once

#include <optional>
#include <vector>

#include "platform/x11/HeldInput.h"
#include "platform/x11/X11Keyboard.h"

namespace morvelin {

/// A program looks up what a keycode types when it handles the event, which may be a while after it was posted. So a
/// keycode gets another character only once the programs have had time for the one before.
class SpareKeycodes {
public:
    static constexpr Seconds kSettling{0.5};

    SpareKeycodes(HeldInput& held, const X11Keyboard& keyboard);

    /// The layout has been read anew.
    void layoutChanged(const X11Keyboard& keyboard);

    /// The keycode that types the symbol from now on; nothing where the layout leaves none unused.
    [[nodiscard]] std::optional<std::uint8_t> lend(KeySymbol symbol, HostTime now);
    /// How long until `lend` may be called for the symbol.
    [[nodiscard]] Seconds settlingTime(KeySymbol symbol, HostTime now) const;
    /// How long until all may be taken back.
    [[nodiscard]] Seconds settlingTime(HostTime now) const;
    void takeAllBack();

    [[nodiscard]] bool owns(std::uint8_t keycode) const;

private:
    struct Spare {
        std::uint8_t keycode = 0;
        std::optional<KeySymbol> symbol; ///< while it is lent
        HostTime lastUse{-1};
    };

    [[nodiscard]] const Spare* lentTo(KeySymbol symbol) const;
    [[nodiscard]] const Spare* longestUnused() const;

    HeldInput& m_held;
    std::vector<Spare> m_spares;
};

} // namespace morvelin
