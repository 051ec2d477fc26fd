#include "platform/x11/HeldInput.h"

#include <array>
#include <ranges>
#include <span>
#include <string_view>
#include <vector>

#include <xcb/xtest.h>

namespace morvelin {

namespace {

constexpr std::string_view kNotesName = "_MORVELIN_HELD_INPUT";
constexpr unsigned kKindShift = 8;

xcb_atom_t internAtom(const X11Connection& connection, std::string_view name) {
    const auto reply = owned(xcb_intern_atom_reply(
        connection.get(), xcb_intern_atom(connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

bool hasOwner(const X11Connection& connection, xcb_atom_t selection) {
    const auto reply = owned(
        xcb_get_selection_owner_reply(connection.get(), xcb_get_selection_owner(connection.get(), selection), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

void becomeOwner(const X11Connection& connection, xcb_atom_t selection) {
    xcb_connection_t* x = connection.get();
    const xcb_window_t window = xcb_generate_id(x);
    xcb_create_window(x, 0, window, connection.root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_set_selection_owner(x, window, selection, XCB_CURRENT_TIME);
}

} // namespace

HeldInput::HeldInput(const X11Connection& connection)
    : m_connection(connection),
      m_notes(internAtom(connection, kNotesName)) {
    // Another program of ours that lives looks after its own notes.
    m_isNoting = !hasOwner(m_connection, m_notes);
    if (!m_isNoting) return;
    putBackWhatACrashLeft();
    becomeOwner(m_connection, m_notes);
    m_connection.flush();
}

HeldInput::~HeldInput() {
    for (const Held& each : m_held) putBack(each);
    if (m_isNoting) xcb_delete_property(m_connection.get(), m_connection.root(), m_notes);
    // The connection may end right after this: the server first has to have read it all.
    const auto answer = owned(
        xcb_get_input_focus_reply(m_connection.get(), xcb_get_input_focus(m_connection.get()), nullptr));
}

void HeldInput::putBackWhatACrashLeft() const {
    constexpr std::uint32_t kMostNotes = 1024;
    const auto reply = owned(xcb_get_property_reply(
        m_connection.get(),
        xcb_get_property(m_connection.get(), 1, m_connection.root(), m_notes, XCB_ATOM_CARDINAL, 0, kMostNotes),
        nullptr));
    if (!reply || reply->format != 32) return;
    const auto* notes = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    for (const std::uint32_t note : std::span(notes, reply->value_len)) {
        const std::uint32_t kind = note >> kKindShift;
        if (kind <= static_cast<std::uint32_t>(Kind::SpareKeycode))
            putBack({static_cast<Kind>(kind), static_cast<std::uint8_t>(note)});
    }
}

void HeldInput::press(const Held& what) {
    note(what);
    push(what);
}

void HeldInput::release(const Held& what) {
    putBack(what);
    forget(what);
}

void HeldInput::tap(std::initializer_list<Held> chord) const {
    for (const Held& each : chord) push(each);
    for (const Held& each : std::span(chord) | std::views::reverse) putBack(each);
}

void HeldInput::lend(std::uint8_t keycode, std::uint32_t symbol) {
    note({Kind::SpareKeycode, keycode});
    setSymbol(keycode, symbol);
}

void HeldInput::takeBack(std::uint8_t keycode) { release({Kind::SpareKeycode, keycode}); }
void HeldInput::forget(std::uint8_t keycode) { forget(Held{Kind::SpareKeycode, keycode}); }

void HeldInput::push(const Held& what) const {
    fake(what.kind == Kind::Button ? XCB_BUTTON_PRESS : XCB_KEY_PRESS, what.code);
}

void HeldInput::putBack(const Held& what) const {
    switch (what.kind) {
    case Kind::Button: fake(XCB_BUTTON_RELEASE, what.code); break;
    case Kind::Key: fake(XCB_KEY_RELEASE, what.code); break;
    case Kind::SpareKeycode: setSymbol(what.code, XCB_NO_SYMBOL); break;
    }
}

void HeldInput::note(const Held& what) {
    if (m_held.insert(what).second) writeNotes();
}

void HeldInput::forget(const Held& what) {
    if (m_held.erase(what) > 0) writeNotes();
}

void HeldInput::writeNotes() const {
    if (!m_isNoting) return;
    std::vector<std::uint32_t> notes;
    for (const Held& each : m_held) notes.push_back(static_cast<std::uint32_t>(each.kind) << kKindShift | each.code);
    xcb_change_property(m_connection.get(), XCB_PROP_MODE_REPLACE, m_connection.root(), m_notes, XCB_ATOM_CARDINAL, 32,
                        static_cast<std::uint32_t>(notes.size()), notes.data());
}

void HeldInput::fake(std::uint8_t type, std::uint8_t detail) const {
    xcb_test_fake_input(m_connection.get(), type, detail, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
}

/// Both levels are set, since with one alone the server adds the capital letter as the other.
void HeldInput::setSymbol(std::uint8_t keycode, std::uint32_t symbol) const {
    const std::array<xcb_keysym_t, 2> levels{symbol, symbol};
    xcb_change_keyboard_mapping(m_connection.get(), 1, keycode, levels.size(), levels.data());
}

} // namespace morvelin
