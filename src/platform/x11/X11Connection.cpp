#include "platform/x11/X11Connection.h"

#include <ctime>

#include <fmt/format.h>
#include <poll.h>
#include <xcb/xcbext.h>
#include <xcb/xproto.h>

#include "platform/x11/HostClock.h"

namespace morvelin {

namespace {

/// Long for a server that works, and short for a person who waits for the program.
constexpr Seconds kShortPatience{0.1};

const xcb_screen_t* screenNumbered(xcb_connection_t* connection, int number) {
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0 && number > 0; --number) xcb_screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

ScreenError noServer(const std::string& display) {
    if (display.empty())
        return {
            ScreenError::Kind::NoDisplayServer,
            "There is no X display to record: DISPLAY is not set. Start Morvelin inside a desktop session, or start "
            "a virtual display with Xvfb and set DISPLAY to it."};
    return {
        ScreenError::Kind::NoDisplayServer,
        fmt::format("The X display “{}” does not answer. Check that its server runs, that DISPLAY names it, and that "
                    "this user may connect to it.",
                    display)};
}

} // namespace

Result<X11Connection, ScreenError> X11Connection::open(const std::string& display) {
    const char* named = std::getenv("DISPLAY");
    X11Connection opened;
    opened.m_display = !display.empty() ? display : named != nullptr ? named : "";
    if (opened.m_display.empty()) return failure(noServer(""));

    int screenNumber = 0;
    opened.m_connection.reset(xcb_connect(opened.m_display.c_str(), &screenNumber));
    if (!opened.isAlive()) return failure(noServer(opened.m_display));
    opened.m_screen = screenNumbered(opened.get(), screenNumber);
    if (opened.m_screen == nullptr) return failure(noServer(opened.m_display));
    return opened;
}

bool X11Connection::hasExtension(xcb_extension_t& extension) const {
    const xcb_query_extension_reply_t* reply = xcb_get_extension_data(get(), &extension);
    return reply != nullptr && reply->present != 0;
}

std::uint8_t X11Connection::firstEvent(xcb_extension_t& extension) const {
    return xcb_get_extension_data(get(), &extension)->first_event;
}

bool X11Connection::isAnswering() const {
    if (!m_owedReply) return true;
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (xcb_poll_for_reply(get(), *m_owedReply, &reply, &error) == 0) return false;
    std::free(reply);
    std::free(error);
    m_owedReply.reset();
    return true;
}

void* X11Connection::waitForReply(unsigned sequence, Patience patience) const {
    if (patience == Patience::Endless) return xcb_wait_for_reply(get(), sequence, nullptr);
    flush();
    const HostTime limit = hostNow() + kShortPatience;
    for (;;) {
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        if (xcb_poll_for_reply(get(), sequence, &reply, &error) != 0) {
            std::free(error);
            return reply;
        }
        const Seconds left = limit - hostNow();
        if (left <= Seconds(0)) break;
        pollfd watched{descriptor(), POLLIN, 0};
        (void)::poll(&watched, 1, static_cast<int>(left.value * 1000) + 1);
    }
    if (m_owedReply) xcb_discard_reply(get(), *m_owedReply);
    m_owedReply = sequence;
    return nullptr;
}

std::optional<PixelBox> X11Connection::desktop() const {
    const auto geometry = owned(xcb_get_geometry_reply(get(), xcb_get_geometry(get(), root()), nullptr));
    if (!geometry) return std::nullopt;
    return PixelBox{0, 0, geometry->width, geometry->height};
}

std::optional<std::string> X11Connection::resource(const std::string& name) const {
    constexpr std::uint32_t kMostWords = 1U << 18;
    const auto reply = owned(xcb_get_property_reply(
        get(), xcb_get_property(get(), 0, root(), XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 0, kMostWords), nullptr));
    if (!reply) return std::nullopt;
    std::string_view rest(static_cast<const char*>(xcb_get_property_value(reply.get())),
                          static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        if (!line.starts_with(name) || line.size() <= name.size() || line[name.size()] != ':') continue;
        const std::size_t start = line.find_first_not_of(" \t", name.size() + 1);
        if (start != std::string_view::npos) return std::string(line.substr(start));
    }
    return std::nullopt;
}

ScreenError X11Connection::lost() const {
    return {ScreenError::Kind::ConnectionLost, fmt::format("The X display “{}” has gone away.", m_display)};
}

ScreenError X11Connection::lacks(const std::string& extension) const {
    return {ScreenError::Kind::MissingExtension,
            fmt::format("The X display “{}” lacks the {} extension, which recording needs. Record on a display of this "
                        "machine.",
                        m_display, extension)};
}

} // namespace morvelin
