#include "platform/x11/X11ScreenStream.h"

#include <xcb/randr.h>

#include "platform/x11/Displays.h"

namespace morvelin {

Result<std::unique_ptr<ScreenStream>, ScreenError> X11ScreenStream::open(X11Connection connection,
                                                                         const ScreenStreamOptions& options) {
    if (auto present = requireExtensions(connection); !present) return passOn(std::move(present));
    auto memory = SharedMemory::create(connection, bytesOf(options.area));
    if (!memory) return passOn(std::move(memory));
    const auto desktop = connection.desktop();
    if (!desktop) return failure(connection.lost());

    std::unique_ptr<X11ScreenStream> stream(new X11ScreenStream(std::move(connection), std::move(*memory), options));
    stream->show(*desktop);
    stream->watchDesktop();
    return stream;
}

X11ScreenStream::X11ScreenStream(X11Connection connection, SharedMemory memory, const ScreenStreamOptions& options)
    : X11DamageStream(std::move(connection), std::move(memory), {options.area.width, options.area.height},
                      options.minimumFrameInterval),
      m_area(options.area),
      m_displayID(options.displayID) {}

void X11ScreenStream::watchDesktop() {
    const xcb_window_t root = connection().root();
    const std::uint32_t rootEvents = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection().get(), root, XCB_CW_EVENT_MASK, &rootEvents);
    if (connection().hasExtension(xcb_randr_id)) {
        m_randrEvent = connection().firstEvent(xcb_randr_id);
        xcb_randr_select_input(connection().get(), root,
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                                   XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    }
    watch(root);
}

void X11ScreenStream::show(const PixelBox& desktop) {
    const PixelBox seen = m_area.intersected(desktop);
    m_visible = {seen.x - m_area.x, seen.y - m_area.y, seen.width, seen.height};
    setSource({.drawable = connection().root(),
               .x = m_area.x,
               .y = m_area.y,
               .damageX = m_area.x,
               .damageY = m_area.y,
               .visible = m_visible});
}

bool X11ScreenStream::changesSource(std::uint8_t number, const xcb_generic_event_t&) {
    return number == XCB_CONFIGURE_NOTIFY ||
           (m_randrEvent != 0 &&
            (number == m_randrEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY || number == m_randrEvent + XCB_RANDR_NOTIFY));
}

/// After a change of resolution or of monitors: what the desktop no longer holds turns black, the rest is fetched anew.
Result<void, ScreenError> X11ScreenStream::followSource(std::vector<PixelBox>& changed) {
    const auto desktop = connection().desktop();
    if (!desktop) return failure(connection().lost());
    if (!m_displayID.empty()) {
        auto present = displayNamed(connection(), m_displayID);
        if (!present) return passOn(std::move(present));
    }
    show(*desktop);
    const PixelBox& seen = m_visible;
    if (seen.isEmpty())
        return failure(
            ScreenError{ScreenError::Kind::DisplayNotFound, "The recorded part of the desktop is no longer there."});
    image().clear({seen.right(), 0, size().width - seen.right(), size().height}, changed);
    image().clear({0, seen.bottom(), seen.right(), size().height - seen.bottom()}, changed);
    return {};
}

void X11ScreenStream::put(const PixelBox& box, const std::uint8_t* pixels, std::vector<PixelBox>& changed) {
    image().update(box, pixels, changed);
}

} // namespace morvelin
