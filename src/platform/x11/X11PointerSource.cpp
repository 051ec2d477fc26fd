#include "platform/x11/X11PointerSource.h"

#include <charconv>
#include <cstring>

#include <xcb/xfixes.h>

#include "platform/x11/ButtonMonitor.h"
#include "platform/x11/CursorTheme.h"

namespace morvelin {

namespace {

constexpr std::uint8_t kEventNumber = 0x7f;
/// An animated pointer shows many images; past this many the oldest knowledge is not worth its memory.
constexpr std::size_t kMostSeenShapes = 64;

std::optional<int> wholeNumber(const std::string& text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number <= 0) return std::nullopt;
    return number;
}

/// The server's words of premultiplied ARGB are the bytes B G R A.
PointerShape shapeOf(const xcb_xfixes_get_cursor_image_and_name_reply_t& reply) {
    PointerShape shape;
    shape.identity = reply.cursor_serial;
    shape.image.size = {reply.width, reply.height};
    const auto bytes = static_cast<std::size_t>(reply.width) * reply.height * 4;
    shape.image.pixels.resize(bytes);
    std::memcpy(shape.image.pixels.data(), xcb_xfixes_get_cursor_image_and_name_cursor_image(&reply), bytes);
    shape.width = reply.width;
    shape.height = reply.height;
    shape.hotSpotX = reply.xhot;
    shape.hotSpotY = reply.yhot;
    return shape;
}

std::string nameOf(const xcb_xfixes_get_cursor_image_and_name_reply_t& reply) {
    return {xcb_xfixes_get_cursor_image_and_name_name(&reply),
            static_cast<std::size_t>(xcb_xfixes_get_cursor_image_and_name_name_length(&reply))};
}

/// What a listener's timer and the actions that wait in the loop share.
struct Listener {
    std::function<void(const PointerButtonEvent&)> action;
    std::unique_ptr<ButtonMonitor> monitor;
    bool isActive = true; ///< on the loop's thread
};

} // namespace

Result<std::unique_ptr<X11PointerSource>, ScreenError> X11PointerSource::connect(const std::string& display) {
    auto connection = X11Connection::open(display);
    if (!connection) return passOn(std::move(connection));
    if (!connection->hasExtension(xcb_xfixes_id)) return failure(connection->lacks("XFIXES"));
    const auto version = owned(
        xcb_xfixes_query_version_reply(connection->get(), xcb_xfixes_query_version(connection->get(), 4, 0), nullptr));
    if (!version) return failure(connection->lost());
    return std::unique_ptr<X11PointerSource>(new X11PointerSource(std::move(*connection)));
}

X11PointerSource::X11PointerSource(X11Connection connection)
    : m_connection(std::move(connection)),
      m_fixesEvent(m_connection.firstEvent(xcb_xfixes_id)) {
    xcb_xfixes_select_cursor_input(m_connection.get(), m_connection.root(),
                                   XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
    m_connection.flush();
}

/// A server that hangs must not hold the main thread, which alone can tell of it.
std::optional<DesktopPoint> X11PointerSource::location() {
    if (!m_connection.isAnswering()) return std::nullopt;
    const auto question = xcb_query_pointer(m_connection.get(), m_connection.root());
    const auto reply = m_connection.reply<xcb_query_pointer_reply_t>(question.sequence, X11Connection::Patience::Short);
    if (!reply) return std::nullopt;
    return DesktopPoint{static_cast<double>(reply->root_x), static_cast<double>(reply->root_y)};
}

/// The server tells of each change of the image, so only the first question needs an answer of its own.
std::optional<std::uint64_t> X11PointerSource::shapeIdentity() {
    readEvents();
    if (!m_serial) return shape().transform([](const PointerShape& shown) { return shown.identity; });
    return m_serial;
}

void X11PointerSource::readEvents() {
    while (const auto event = m_connection.poll()) {
        if ((event->response_type & kEventNumber) != m_fixesEvent + XCB_XFIXES_CURSOR_NOTIFY) continue;
        m_serial = reinterpret_cast<const xcb_xfixes_cursor_notify_event_t&>(*event).cursor_serial;
    }
}

std::optional<PointerShape> X11PointerSource::shape() {
    readEvents();
    if (m_serial)
        if (const auto seen = m_seenShapes.find(*m_serial); seen != m_seenShapes.end()) return seen->second;
    if (!m_connection.isAnswering()) return std::nullopt;
    const auto question = xcb_xfixes_get_cursor_image_and_name(m_connection.get());
    const auto reply = m_connection.reply<xcb_xfixes_get_cursor_image_and_name_reply_t>(question.sequence,
                                                                                        X11Connection::Patience::Short);
    if (!reply) return std::nullopt;
    m_serial = reply->cursor_serial;
    if (m_seenShapes.size() >= kMostSeenShapes) m_seenShapes.clear();
    PointerShape shape = denserShape(shapeOf(*reply), nameOf(*reply), theme());
    return m_seenShapes.insert_or_assign(*m_serial, std::move(shape)).first->second;
}

/// From the theme's files: the arrow need not show anywhere at the moment, and asking for it disturbs nobody.
std::optional<PointerShape> X11PointerSource::arrow() { return themeArrow(theme(), nominalSize()); }

/// The theme that programs take: by their environment, else by the desktop's settings; empty is the default one.
std::string X11PointerSource::theme() const {
    if (const char* named = std::getenv("XCURSOR_THEME")) return named;
    return m_connection.resource("Xcursor.theme").value_or("");
}

/// The size that programs ask the theme for, as libXcursor chooses it.
int X11PointerSource::nominalSize() const {
    if (const char* named = std::getenv("XCURSOR_SIZE"))
        if (const auto size = wholeNumber(named)) return *size;
    if (const auto named = m_connection.resource("Xcursor.size"))
        if (const auto size = wholeNumber(*named)) return *size;
    if (const auto named = m_connection.resource("Xft.dpi"))
        if (const auto dotsPerInch = wholeNumber(*named)) return *dotsPerInch * 16 / 72;
    const xcb_screen_t& screen = m_connection.screen();
    return std::min(screen.width_in_pixels, screen.height_in_pixels) / 48;
}

EventLoop::Timer X11PointerSource::onButton(EventLoop& loop, std::function<void(const PointerButtonEvent&)> action) {
    const auto listener = std::make_shared<Listener>();
    listener->action = std::move(action);
    auto monitor = ButtonMonitor::start(m_connection.display(), [&loop, listener](const PointerButtonEvent& event) {
        loop.post([listener, event] {
            if (listener->isActive) listener->action(event);
        });
    });
    // Without XInput 2 a take has its pointer's path and no clicks.
    if (!monitor) return {};
    listener->monitor = std::move(*monitor);
    return EventLoop::Timer([listener] {
        listener->isActive = false;
        listener->monitor.reset();
    });
}

} // namespace morvelin
