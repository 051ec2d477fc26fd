#include "platform/x11/SpareKeycodes.h"

#include <algorithm>

namespace morvelin {

SpareKeycodes::SpareKeycodes(HeldInput& held, const X11Keyboard& keyboard) : m_held(held) { layoutChanged(keyboard); }

void SpareKeycodes::layoutChanged(const X11Keyboard& keyboard) {
    std::vector<Spare> spares;
    for (const Spare& each : m_spares) {
        if (!each.symbol) continue;
        if (keyboard.symbolAt(each.keycode) == *each.symbol)
            spares.push_back(each);
        else
            m_held.forget(each.keycode);
    }
    for (const std::uint8_t keycode : keyboard.unusedKeycodes()) spares.push_back({.keycode = keycode, .symbol = {}});
    m_spares = std::move(spares);
}

const SpareKeycodes::Spare* SpareKeycodes::lentTo(KeySymbol symbol) const {
    const auto found = std::ranges::find(m_spares, std::optional(symbol), &Spare::symbol);
    return found == m_spares.end() ? nullptr : &*found;
}

const SpareKeycodes::Spare* SpareKeycodes::longestUnused() const {
    const auto found = std::ranges::min_element(m_spares, {}, &Spare::lastUse);
    return found == m_spares.end() ? nullptr : &*found;
}

std::optional<std::uint8_t> SpareKeycodes::lend(KeySymbol symbol, HostTime now) {
    const Spare* chosen = lentTo(symbol);
    if (chosen == nullptr) chosen = longestUnused();
    if (chosen == nullptr) return std::nullopt;
    Spare& spare = m_spares[static_cast<std::size_t>(chosen - m_spares.data())];
    if (spare.symbol != symbol) m_held.lend(spare.keycode, symbol);
    spare.symbol = symbol;
    spare.lastUse = now;
    return spare.keycode;
}

Seconds SpareKeycodes::settlingTime(KeySymbol symbol, HostTime now) const {
    const Spare* next = longestUnused();
    if (next == nullptr || lentTo(symbol) != nullptr || !next->symbol) return {};
    return std::max(next->lastUse + kSettling - now, Seconds(0));
}

Seconds SpareKeycodes::settlingTime(HostTime now) const {
    const auto latest = std::ranges::max_element(m_spares, {}, &Spare::lastUse);
    if (latest == m_spares.end() || !latest->symbol) return {};
    return std::max(latest->lastUse + kSettling - now, Seconds(0));
}

void SpareKeycodes::takeAllBack() {
    for (Spare& each : m_spares)
        if (std::exchange(each.symbol, std::nullopt)) m_held.takeBack(each.keycode);
}

bool SpareKeycodes::owns(std::uint8_t keycode) const {
    return std::ranges::find(m_spares, keycode, &Spare::keycode) != m_spares.end();
}

} // namespace morvelin
