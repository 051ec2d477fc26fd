#include "platform/x11/X11WindowStream.h"

#include <cstring>

#include <fmt/format.h>
#include <xcb/composite.h>

namespace morvelin {

namespace {

constexpr int kBytesPerPixel = 4;
/// A window that was covered draws itself anew as soon as it has pixels of its own; the first frame waits for that.
constexpr Seconds kTimeToDraw{0.1};

ScreenError closed(const std::string& name) {
    return {ScreenError::Kind::WindowClosed, name.empty() ? "The recorded window was closed."
                                                          : fmt::format("The recorded window “{}” was closed.", name)};
}

bool knowsPixmaps(const X11Connection& connection) {
    if (!connection.hasExtension(xcb_composite_id)) return false;
    const auto version = owned(xcb_composite_query_version_reply(
        connection.get(), xcb_composite_query_version(connection.get(), 0, 4), nullptr));
    return version && (version->major_version > 0 || version->minor_version >= 2);
}

} // namespace

Result<std::unique_ptr<ScreenStream>, ScreenError> X11WindowStream::open(X11Connection connection,
                                                                         const ScreenStreamOptions& options) {
    if (auto present = requireExtensions(connection); !present) return passOn(std::move(present));
    if (!knowsPixmaps(connection)) return failure(connection.lacks("COMPOSITE"));
    auto memory = SharedMemory::create(connection, bytesOf(options.area));
    if (!memory) return passOn(std::move(memory));

    std::unique_ptr<X11WindowStream> stream(new X11WindowStream(std::move(connection), std::move(*memory), options));
    stream->watchWindow();
    std::vector<PixelBox> ignored; // the first frame changes everything anyway
    if (auto shown = stream->followSource(ignored); !shown) return passOn(std::move(shown));
    if (stream->m_pixmap == 0) return failure(closed(stream->m_name));
    stream->waitUntil(hostNow() + kTimeToDraw);
    return stream;
}

X11WindowStream::X11WindowStream(X11Connection connection, SharedMemory memory, const ScreenStreamOptions& options)
    : X11DamageStream(std::move(connection), std::move(memory), {options.area.width, options.area.height},
                      options.minimumFrameInterval),
      m_window(options.window.value_or(XCB_WINDOW_NONE)),
      m_windows(this->connection()),
      m_name(m_windows.title(m_window)) {}

X11WindowStream::~X11WindowStream() = default;

void X11WindowStream::watchWindow() {
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection().get(), m_window, XCB_CW_EVENT_MASK, &events);
    watchAncestors();
    xcb_composite_redirect_window(connection().get(), m_window, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    watch(m_window);
}

/// A window manager may hide the frame around a window and leave the window itself as it is.
void X11WindowStream::watchAncestors() {
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    for (const xcb_window_t ancestor : m_windows.ancestors(m_window))
        xcb_change_window_attributes(connection().get(), ancestor, XCB_CW_EVENT_MASK, &events);
}

bool X11WindowStream::changesSource(std::uint8_t number, const xcb_generic_event_t& event) {
    switch (number) {
    case XCB_REPARENT_NOTIFY: watchAncestors(); return true;
    case XCB_MAP_NOTIFY:
    case XCB_UNMAP_NOTIFY:
    case XCB_DESTROY_NOTIFY: return true;
    case XCB_CONFIGURE_NOTIFY: return reinterpret_cast<const xcb_configure_notify_event_t&>(event).window == m_window;
    default: return false;
    }
}

Result<void, ScreenError> X11WindowStream::followSource(std::vector<PixelBox>& changed) {
    const auto place = m_windows.place(m_window, X11Windows::Patience::Endless);
    if (!place) return failure(connection().isAlive() ? closed(m_name) : connection().lost());
    if (!place->isShown) {
        hide();
        return {};
    }
    if (place->depth != 24 && place->depth != 32)
        return failure(ScreenError{ScreenError::Kind::UnsupportedPixels,
                                   fmt::format("The window has {} bits of colour; recording needs 24.", place->depth)});
    return show(*place, changed);
}

/// Takes the window's present pixmap, which replaces an earlier one.
Result<void, ScreenError> X11WindowStream::show(const WindowPlace& place, std::vector<PixelBox>& changed) {
    hide();
    m_pixmap = xcb_generate_id(connection().get());
    xcb_composite_name_window_pixmap(connection().get(), m_window, m_pixmap);
    const auto pixmap = owned(
        xcb_get_geometry_reply(connection().get(), xcb_get_geometry(connection().get(), m_pixmap), nullptr));
    if (!pixmap) { // hidden in this moment; another event tells when it shows again
        m_pixmap = 0;
        return connection().isAlive() ? Result<void, ScreenError>() : failure(connection().lost());
    }
    const PixelSize content{std::max(place.frame.width & ~1, 2), std::max(place.frame.height & ~1, 2)};
    if (content != m_content)
        if (auto fitted = fit(content, changed); !fitted) return fitted;
    const int x = place.border + place.insetX;
    const int y = place.border + place.insetY;
    const PixelBox held{-x, -y, pixmap->width, pixmap->height};
    setSource({.drawable = m_pixmap,
               .x = x,
               .y = y,
               .damageX = place.insetX,
               .damageY = place.insetY,
               .visible = held.intersected({0, 0, content.width, content.height})});
    return {};
}

void X11WindowStream::hide() {
    if (m_pixmap != 0) xcb_free_pixmap(connection().get(), std::exchange(m_pixmap, 0U));
    setSource({});
}

/// The movie keeps its size: a window that has another one now is placed anew in a black picture.
Result<void, ScreenError> X11WindowStream::fit(PixelSize content, std::vector<PixelBox>& changed) {
    const std::size_t needed = bytesOf({0, 0, content.width, content.height});
    if (needed > memorySize()) {
        auto larger = SharedMemory::create(connection(), needed);
        if (!larger) return passOn(std::move(larger));
        setMemory(std::move(*larger));
    }
    m_content = content;
    m_fit = fitWindow(content, size());
    image().clear({0, 0, size().width, size().height}, changed);
    m_reduction.reset();
    if (m_fit.scale < 1)
        m_reduction.emplace(ScreenImage(content), ScreenScaler(content, {m_fit.place.width, m_fit.place.height}),
                            std::vector<std::uint8_t>());
    return {};
}

void X11WindowStream::put(const PixelBox& box, const std::uint8_t* pixels, std::vector<PixelBox>& changed) {
    if (!m_reduction) {
        image().update({box.x + m_fit.place.x, box.y + m_fit.place.y, box.width, box.height}, pixels, changed);
        return;
    }
    std::vector<PixelBox> redrawn;
    m_reduction->whole.update(box, pixels, redrawn);
    for (const PixelBox& each : redrawn)
        putReduced(m_reduction->scaler.update(m_reduction->whole.pixels(), each), changed);
}

void X11WindowStream::putReduced(const PixelBox& scaled, std::vector<PixelBox>& changed) {
    if (scaled.isEmpty()) return;
    const ScreenPixels reduced = m_reduction->scaler.pixels();
    const std::size_t rowBytes = static_cast<std::size_t>(scaled.width) * kBytesPerPixel;
    m_reduction->rows.resize(bytesOf(scaled));
    for (int row = 0; row < scaled.height; ++row)
        std::memcpy(m_reduction->rows.data() + static_cast<std::size_t>(row) * rowBytes,
                    reduced.data + (scaled.y + row) * reduced.stride + std::ptrdiff_t{scaled.x} * kBytesPerPixel,
                    rowBytes);
    image().update({scaled.x + m_fit.place.x, scaled.y + m_fit.place.y, scaled.width, scaled.height},
                   m_reduction->rows.data(), changed);
}

} // namespace morvelin
