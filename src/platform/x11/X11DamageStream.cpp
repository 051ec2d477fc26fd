#include "platform/x11/X11DamageStream.h"

#include <fmt/format.h>
#include <sys/socket.h>

#include "platform/x11/FetchPlan.h"

namespace morvelin {

namespace {

constexpr int kBytesPerPixel = 4;

/// Bits that tell a sent event from the server's own are no part of its number.
constexpr std::uint8_t kEventNumber = 0x7f;

/// Whether the root window's pixels are bytes B, G, R and one unused.
bool hasExpectedPixels(const X11Connection& connection) {
    const xcb_setup_t* setup = xcb_get_setup(connection.get());
    bool hasWords = false;
    for (auto format = xcb_setup_pixmap_formats_iterator(setup); format.rem > 0; xcb_format_next(&format))
        if (format.data->depth == connection.screen().root_depth) hasWords = format.data->bits_per_pixel == 32;
    if (!hasWords || setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST) return false;

    for (auto depth = xcb_screen_allowed_depths_iterator(&connection.screen()); depth.rem > 0; xcb_depth_next(&depth))
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem > 0; xcb_visualtype_next(&visual))
            if (visual.data->visual_id == connection.screen().root_visual)
                return visual.data->red_mask == 0xff0000 && visual.data->green_mask == 0xff00 &&
                       visual.data->blue_mask == 0xff;
    return false;
}

} // namespace

X11DamageStream::X11DamageStream(X11Connection connection, SharedMemory memory, PixelSize size,
                                 Seconds minimumFrameInterval)
    : m_connection(std::move(connection)),
      m_memory(std::move(memory)),
      m_image(size),
      m_interval(minimumFrameInterval) {}

std::size_t X11DamageStream::bytesOf(const PixelBox& box) {
    return static_cast<std::size_t>(box.width) * static_cast<std::size_t>(box.height) * kBytesPerPixel;
}

Result<void, ScreenError> X11DamageStream::requireExtensions(const X11Connection& connection) {
    if (!connection.hasExtension(xcb_damage_id)) return failure(connection.lacks("DAMAGE"));
    if (!connection.hasExtension(xcb_xfixes_id)) return failure(connection.lacks("XFIXES"));
    // A server speaks these extensions only with clients that have said their version.
    const auto damage = xcb_damage_query_version(connection.get(), 1, 1);
    const auto fixes = xcb_xfixes_query_version(connection.get(), 4, 0);
    const auto damageVersion = owned(xcb_damage_query_version_reply(connection.get(), damage, nullptr));
    const auto fixesVersion = owned(xcb_xfixes_query_version_reply(connection.get(), fixes, nullptr));
    if (!damageVersion || !fixesVersion) return failure(connection.lost());
    if (!hasExpectedPixels(connection))
        return failure(ScreenError{ScreenError::Kind::UnsupportedPixels,
                                   fmt::format("The X display “{}” has {} bits of colour; recording needs 24. Set the "
                                               "server's depth to 24.",
                                               connection.display(), connection.screen().root_depth)});
    return {};
}

void X11DamageStream::watch(xcb_drawable_t drawable) {
    xcb_connection_t* connection = m_connection.get();
    m_region = xcb_generate_id(connection);
    xcb_xfixes_create_region(connection, m_region, 0, nullptr);
    m_damage = xcb_generate_id(connection);
    xcb_damage_create(connection, m_damage, drawable, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    m_damageEvent = m_connection.firstEvent(xcb_damage_id);
    m_connection.flush();
}

void X11DamageStream::setSource(const Source& source) {
    m_source = source;
    m_isWholeWanted = true;
    m_isDamaged = true;
}

/// The library then sees the end of the connection, wherever it waits for the server.
void X11DamageStream::cut() {
    ::shutdown(m_connection.descriptor(), SHUT_RDWR);
    m_wakeUp.ring();
}

Result<bool, ScreenError> X11DamageStream::next(Seconds timeout, const std::function<void(const ScreenFrame&)>& take) {
    const HostTime deadline = hostNow() + timeout;
    std::vector<PixelBox> changed;
    HostTime frameTime;
    while (changed.empty()) {
        const Wait outcome = waitForDamage(deadline);
        if (!m_connection.isAlive()) return failure(m_connection.lost());
        if (outcome != Wait::Due) return false;

        if (std::exchange(m_hasSourceChanged, false))
            if (auto followed = followSource(changed); !followed) return passOn(std::move(followed));
        auto drawn = takeDamage();
        if (!drawn) return passOn(std::move(drawn));
        frameTime = hostNow();
        schedule(frameTime);
        if (auto fetched = fetch(planFetch(*drawn), changed); !fetched) return passOn(std::move(fetched));
        if (std::exchange(m_isFirstFrame, false)) changed = {PixelBox{0, 0, size().width, size().height}};
    }
    take({frameTime, m_image.pixels(), changed});
    return true;
}

/// Reads what has arrived without waiting for more.
void X11DamageStream::readEvents() {
    while (const auto event = m_connection.poll()) {
        const auto number = static_cast<std::uint8_t>(event->response_type & kEventNumber);
        if (number == m_damageEvent)
            m_isDamaged = true;
        else if (changesSource(number, *event))
            m_hasSourceChanged = true;
    }
}

X11DamageStream::Wait X11DamageStream::waitForDamage(HostTime deadline) {
    for (;;) {
        readEvents();
        const HostTime now = hostNow();
        const bool hasWork = m_isDamaged || m_hasSourceChanged;
        if (!m_connection.isAlive() || (hasWork && now >= m_nextDue)) return Wait::Due;
        if (now >= deadline) return Wait::TimedOut;
        // Once damage is known, more of it is no reason to wake before the frame is due.
        const int watched = hasWork ? -1 : m_connection.descriptor();
        const HostTime limit = hasWork ? std::min(m_nextDue, deadline) : deadline;
        if (waitFor(watched, m_wakeUp, limit) == WaitOutcome::Woken) return Wait::Interrupted;
    }
}

/// Keeps frames on an even beat while they come without pause, and starts a new beat after a rest.
void X11DamageStream::schedule(HostTime frameTime) {
    const HostTime onBeat = m_nextDue + m_interval;
    m_nextDue = onBeat > frameTime ? onBeat : frameTime + m_interval;
}

/// The boxes drawn upon since the last call, relative to the picture's corner, and forgets them.
Result<std::vector<PixelBox>, ScreenError> X11DamageStream::takeDamage() {
    xcb_connection_t* connection = m_connection.get();
    m_isDamaged = false;
    xcb_damage_subtract(connection, m_damage, XCB_NONE, m_region);
    if (m_source.visible.isEmpty()) return std::vector<PixelBox>{};
    if (std::exchange(m_isWholeWanted, false)) return std::vector<PixelBox>{m_source.visible};

    const auto region = owned(
        xcb_xfixes_fetch_region_reply(connection, xcb_xfixes_fetch_region(connection, m_region), nullptr));
    if (!region) return failure(m_connection.lost());
    const xcb_rectangle_t* rectangles = xcb_xfixes_fetch_region_rectangles(region.get());
    const auto count = static_cast<std::size_t>(xcb_xfixes_fetch_region_rectangles_length(region.get()));
    std::vector<PixelBox> drawn;
    drawn.reserve(count);
    for (const xcb_rectangle_t& each : std::span(rectangles, count)) {
        const PixelBox box{each.x - m_source.damageX, each.y - m_source.damageY, each.width, each.height};
        if (const PixelBox seen = box.intersected(m_source.visible); !seen.isEmpty()) drawn.push_back(seen);
    }
    return drawn;
}

/// Has the server draw all boxes behind one another into the shared memory, then takes over what differs.
Result<void, ScreenError> X11DamageStream::fetch(std::span<const PixelBox> boxes, std::vector<PixelBox>& changed) {
    constexpr std::uint32_t kAllPlanes = ~0U;
    std::vector<xcb_shm_get_image_cookie_t> cookies;
    std::size_t offset = 0;
    for (const PixelBox& box : boxes) {
        cookies.push_back(
            xcb_shm_get_image(m_connection.get(), m_source.drawable, static_cast<std::int16_t>(m_source.x + box.x),
                              static_cast<std::int16_t>(m_source.y + box.y), static_cast<std::uint16_t>(box.width),
                              static_cast<std::uint16_t>(box.height), kAllPlanes, XCB_IMAGE_FORMAT_Z_PIXMAP,
                              m_memory.segment(), static_cast<std::uint32_t>(offset)));
        offset += bytesOf(box);
    }

    offset = 0;
    for (std::size_t index = 0; index < boxes.size(); ++index) {
        const auto fetched = owned(xcb_shm_get_image_reply(m_connection.get(), cookies[index], nullptr));
        if (!fetched) {
            discardReplies(std::span(cookies).subspan(index + 1));
            if (!m_connection.isAlive()) return failure(m_connection.lost());
            // The source has shrunk under the request: look at it again.
            m_hasSourceChanged = true;
            return {};
        }
        put(boxes[index], m_memory.data() + offset, changed);
        offset += bytesOf(boxes[index]);
    }
    return {};
}

void X11DamageStream::discardReplies(std::span<const xcb_shm_get_image_cookie_t> cookies) const {
    for (const xcb_shm_get_image_cookie_t& cookie : cookies) xcb_discard_reply(m_connection.get(), cookie.sequence);
}

} // namespace morvelin
