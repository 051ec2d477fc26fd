#include "platform/x11/X11Keyboard.h"

#include <algorithm>
#include <array>
#include <span>

namespace morvelin {

namespace {

constexpr KeySymbol kReturnSymbol = 0xff0d;
constexpr KeySymbol kUnicodeSymbols = 0x01000000;

/// Num Lock, which is on without anybody noticing.
constexpr unsigned kNumLock = XCB_MOD_MASK_2;
constexpr unsigned kModifiers = 0xff;
constexpr unsigned kGroup = 0x6000;

/// The places as Linux numbers them, which every X server of the last two decades does: its key codes and 8. In the order
/// of `Key`.
// clang-format off
constexpr std::array<std::uint8_t, kKeyCount> kKeycodes{
    38, 56, 54, 40, 26, 41, 42, 43, 31, 44, 45, 46, 58, 57, 32, 33, 24, 27, 39, 28, 30, 55, 25, 53, 29, 52,
    19, 10, 11, 12, 13, 14, 15, 16, 17, 18,
    21, 20, 34, 35, 48, 47, 51, 59, 61, 60, 49,
    36, 23, 65, 22, 119, 9,
    113, 114, 111, 116, 110, 115, 112, 117,
    67, 68, 69, 70, 71, 72, 73, 74, 75, 76, 95, 96,
    37, 50, 64, 133
};
// clang-format on

} // namespace

std::uint8_t keycodeOf(Key key) { return kKeycodes[static_cast<std::size_t>(key)]; }

/// Latin-1 characters are their own symbols; the rest of Unicode has a range of its own.
std::optional<KeySymbol> symbolOf(char32_t character) {
    switch (character) {
    case U'\n':
    case U'\r': return kReturnSymbol;
    case U'\t': return 0xff09;
    case U'\b': return 0xff08;
    case 0x1b: return 0xff1b;
    case 0x7f: return 0xffff;
    default: break;
    }
    if (character < 0x20 || (character >= 0x80 && character < 0xa0)) return std::nullopt;
    return character < 0x100 ? character : kUnicodeSymbols + character;
}

void X11Keyboard::read() {
    xcb_connection_t* x = m_connection.get();
    const xcb_setup_t* setup = xcb_get_setup(x);
    m_first = setup->min_keycode;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto mapping = xcb_get_keyboard_mapping(x, m_first, count);
    const auto modifiers = xcb_get_modifier_mapping(x);
    m_symbols.clear();
    m_modifiers.clear();
    if (const auto map = owned(xcb_get_keyboard_mapping_reply(x, mapping, nullptr))) {
        const xcb_keysym_t* first = xcb_get_keyboard_mapping_keysyms(map.get());
        m_symbols.assign(first, first + xcb_get_keyboard_mapping_keysyms_length(map.get()));
        m_width = std::max<std::size_t>(map->keysyms_per_keycode, 1);
    }
    if (const auto map = owned(xcb_get_modifier_mapping_reply(x, modifiers, nullptr))) {
        const xcb_keycode_t* first = xcb_get_modifier_mapping_keycodes(map.get());
        m_modifiers.assign(first, first + xcb_get_modifier_mapping_keycodes_length(map.get()));
    }
}

std::optional<X11Keyboard::Keystroke> X11Keyboard::keystrokeOf(KeySymbol symbol) const {
    const std::size_t levels = std::min<std::size_t>(m_width, 2);
    for (std::size_t level = 0; level < levels; ++level)
        for (std::size_t at = level; at < m_symbols.size(); at += m_width)
            if (m_symbols[at] == symbol)
                return Keystroke{static_cast<std::uint8_t>(m_first + at / m_width), level == 1};
    return std::nullopt;
}

X11Keyboard::State X11Keyboard::state() const {
    const auto pointer = owned(xcb_query_pointer_reply(
        m_connection.get(), xcb_query_pointer(m_connection.get(), m_connection.root()), nullptr));
    if (!pointer) return {};
    const unsigned changing = kGroup | (kModifiers & ~(kNumLock | XCB_MOD_MASK_LOCK));
    return {(pointer->mask & changing) == 0, (pointer->mask & XCB_MOD_MASK_LOCK) != 0};
}

std::optional<std::uint8_t> X11Keyboard::capsLockKey() const {
    constexpr std::size_t kModifierCount = 8;
    const std::size_t each = m_modifiers.size() / kModifierCount;
    for (std::size_t at = each; at < 2 * each; ++at) // Lock comes second
        if (m_modifiers[at] != 0) return m_modifiers[at];
    return std::nullopt;
}

KeySymbol X11Keyboard::symbolAt(std::uint8_t keycode) const {
    const std::size_t at = static_cast<std::size_t>(keycode - m_first) * m_width;
    return keycode >= m_first && at < m_symbols.size() ? m_symbols[at] : XCB_NO_SYMBOL;
}

std::vector<std::uint8_t> X11Keyboard::unusedKeycodes() const {
    std::vector<std::uint8_t> unused;
    for (std::size_t at = 0; at + m_width <= m_symbols.size(); at += m_width) {
        const auto keycode = static_cast<std::uint8_t>(m_first + at / m_width);
        const auto symbols = std::span(m_symbols).subspan(at, m_width);
        const bool isEmpty = std::ranges::all_of(symbols, [](KeySymbol each) { return each == XCB_NO_SYMBOL; });
        if (isEmpty && std::ranges::find(m_modifiers, keycode) == m_modifiers.end()) unused.push_back(keycode);
    }
    return unused;
}

} // namespace morvelin
