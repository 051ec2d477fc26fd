#include "platform/x11/X11Windows.h"

#include <algorithm>
#include <array>
#include <span>

#include <fmt/format.h>

#include "core/base/Text.h"

namespace morvelin {

namespace {

/// Properties are read up to this many 32-bit words.
constexpr std::uint32_t kMostWords = 4096;

using PropertyReply = X11Reply<xcb_get_property_reply_t>;

std::string_view textOf(const PropertyReply& reply) {
    if (!reply || reply->format != 8) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

std::span<const std::uint32_t> wordsOf(const PropertyReply& reply) {
    if (!reply || reply->format != 32) return {};
    return {static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get())) / sizeof(std::uint32_t)};
}

/// Old programs name their windows in Latin-1, whatever they say; some in UTF-8.
std::string fromLatin1(std::string_view text) {
    if (isUTF8(text)) return std::string(text);
    std::string utf8;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            utf8 += c;
        } else {
            utf8 += static_cast<char>(0xc0 | byte >> 6);
            utf8 += static_cast<char>(0x80 | (byte & 0x3f));
        }
    }
    return utf8;
}

/// The class of a window follows the name of its instance, each ended by a NUL.
std::string applicationIn(std::string_view windowClass) {
    const std::size_t end = windowClass.find('\0');
    if (end == std::string_view::npos) return {};
    const std::string_view rest = windowClass.substr(end + 1);
    return fromLatin1(rest.substr(0, rest.find('\0')));
}

} // namespace

/// What a window's place takes, asked all at once.
struct X11Windows::PlaceQuestions {
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
    xcb_translate_coordinates_cookie_t corner;
    xcb_get_property_cookie_t shadow;
};

X11Windows::X11Windows(const X11Connection& connection) : m_connection(connection) {
    struct Wanted {
        std::string_view name;
        xcb_atom_t& atom;
        xcb_intern_atom_cookie_t cookie{};
    };
    std::array<Wanted, 4> wanted{{{"_NET_CLIENT_LIST_STACKING", m_clientListStacking, {}},
                                  {"_NET_WM_NAME", m_title, {}},
                                  {"UTF8_STRING", m_utf8, {}},
                                  {"_GTK_FRAME_EXTENTS", m_shadow, {}}}};
    for (Wanted& each : wanted)
        each.cookie = xcb_intern_atom(connection.get(), 0, static_cast<std::uint16_t>(each.name.size()),
                                      each.name.data());
    for (Wanted& each : wanted)
        if (const auto reply = owned(xcb_intern_atom_reply(connection.get(), each.cookie, nullptr)))
            each.atom = reply->atom;
}

X11Windows::PlaceQuestions X11Windows::askPlace(xcb_window_t window) const {
    xcb_connection_t* connection = m_connection.get();
    return {xcb_get_window_attributes(connection, window), xcb_get_geometry(connection, window),
            xcb_translate_coordinates(connection, window, m_connection.root(), 0, 0),
            xcb_get_property(connection, 0, window, m_shadow, XCB_ATOM_CARDINAL, 0, 4)};
}

std::optional<WindowPlace> X11Windows::answered(const PlaceQuestions& questions, Patience patience) const {
    const auto attributes = m_connection.reply<xcb_get_window_attributes_reply_t>(questions.attributes.sequence,
                                                                                  patience);
    const auto geometry = m_connection.reply<xcb_get_geometry_reply_t>(questions.geometry.sequence, patience);
    const auto corner = m_connection.reply<xcb_translate_coordinates_reply_t>(questions.corner.sequence, patience);
    const auto shadow = m_connection.reply<xcb_get_property_reply_t>(questions.shadow.sequence, patience);
    if (!attributes || !geometry || !corner) return std::nullopt;

    WindowPlace place;
    place.frame = {corner->dst_x, corner->dst_y, geometry->width, geometry->height};
    place.border = geometry->border_width;
    place.depth = geometry->depth;
    place.isShown = attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
                    attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
    const auto margins = wordsOf(shadow);
    if (margins.size() != 4) return place;
    const auto most = static_cast<std::uint32_t>(std::min(geometry->width, geometry->height));
    if (std::ranges::any_of(margins, [most](std::uint32_t margin) { return margin >= most / 2; })) return place;
    const auto [left, right, top, bottom] = std::array{static_cast<int>(margins[0]), static_cast<int>(margins[1]),
                                                       static_cast<int>(margins[2]), static_cast<int>(margins[3])};
    place.insetX = left;
    place.insetY = top;
    place.frame = {place.frame.x + left, place.frame.y + top, place.frame.width - left - right,
                   place.frame.height - top - bottom};
    return place;
}

std::optional<WindowPlace> X11Windows::place(xcb_window_t window, Patience patience) const {
    if (patience == Patience::Short && !m_connection.isAnswering()) return std::nullopt;
    return answered(askPlace(window), patience);
}

std::vector<xcb_window_t> X11Windows::stackedFromTop() const {
    xcb_connection_t* connection = m_connection.get();
    const xcb_window_t root = m_connection.root();
    const auto listed = owned(xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, root, m_clientListStacking, XCB_ATOM_WINDOW, 0, kMostWords),
        nullptr));
    if (const auto words = wordsOf(listed); !words.empty()) return {words.rbegin(), words.rend()};

    const auto tree = owned(xcb_query_tree_reply(connection, xcb_query_tree(connection, root), nullptr));
    if (!tree) return {};
    const std::span children(xcb_query_tree_children(tree.get()),
                             static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())));
    return {children.rbegin(), children.rend()};
}

Result<std::vector<DesktopWindow>, ScreenError> X11Windows::shown() const {
    xcb_connection_t* connection = m_connection.get();
    struct Questions {
        xcb_window_t window;
        PlaceQuestions place;
        xcb_get_property_cookie_t windowClass;
    };
    std::vector<Questions> asked;
    for (const xcb_window_t window : stackedFromTop())
        asked.push_back({window, askPlace(window),
                         xcb_get_property(connection, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, kMostWords)});

    std::vector<DesktopWindow> windows;
    for (const Questions& each : asked) {
        const auto place = answered(each.place, Patience::Endless);
        const auto windowClass = owned(xcb_get_property_reply(connection, each.windowClass, nullptr));
        if (!place || !place->isShown) continue;
        windows.push_back({each.window, "", applicationIn(textOf(windowClass)), place->frame});
    }
    for (DesktopWindow& window : windows) window.title = title(window.id);
    if (!m_connection.isAlive()) return failure(m_connection.lost());
    return windows;
}

std::string X11Windows::title(xcb_window_t window) const {
    xcb_connection_t* connection = m_connection.get();
    const auto modern = xcb_get_property(connection, 0, window, m_title, m_utf8, 0, kMostWords);
    const auto old = xcb_get_property(connection, 0, window, XCB_ATOM_WM_NAME, XCB_GET_PROPERTY_TYPE_ANY, 0,
                                      kMostWords);
    const auto modernReply = owned(xcb_get_property_reply(connection, modern, nullptr));
    const auto oldReply = owned(xcb_get_property_reply(connection, old, nullptr));
    const std::string_view title = textOf(modernReply);
    return fromLatin1(title.empty() ? textOf(oldReply) : title);
}

std::vector<xcb_window_t> X11Windows::ancestors(xcb_window_t window) const {
    std::vector<xcb_window_t> found;
    constexpr std::size_t kDeepest = 64;
    while (found.size() < kDeepest) {
        const auto tree = owned(
            xcb_query_tree_reply(m_connection.get(), xcb_query_tree(m_connection.get(), window), nullptr));
        if (!tree || tree->parent == XCB_WINDOW_NONE || tree->parent == tree->root) return found;
        window = tree->parent;
        found.push_back(window);
    }
    return found;
}

} // namespace morvelin
