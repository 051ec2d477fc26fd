#include "x11/Desktop.h"

#include <array>
#include <cstdlib>

#include <xcb/xtest.h>

namespace morvelin {

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

template <class T>
std::unique_ptr<T, Free> owned(T* reply) {
    return std::unique_ptr<T, Free>(reply);
}

xcb_rectangle_t rectangleOf(const PixelBox& box) {
    return {static_cast<std::int16_t>(box.x), static_cast<std::int16_t>(box.y), static_cast<std::uint16_t>(box.width),
            static_cast<std::uint16_t>(box.height)};
}

} // namespace

Desktop::Desktop(const std::string& display) : m_display(display), m_connection(xcb_connect(display.c_str(), nullptr)) {
    m_root = xcb_setup_roots_iterator(xcb_get_setup(connection())).data->root;
    m_ink = xcb_generate_id(connection());
    xcb_create_gc(connection(), m_ink, m_root, 0, nullptr);
}

xcb_window_t Desktop::create(const PixelBox& box, std::uint32_t colour, bool isManaged) {
    const xcb_window_t window = xcb_generate_id(connection());
    const std::array<std::uint32_t, 2> values{colour, isManaged ? 0U : 1U};
    xcb_create_window(connection(), XCB_COPY_FROM_PARENT, window, m_root, static_cast<std::int16_t>(box.x),
                      static_cast<std::int16_t>(box.y), static_cast<std::uint16_t>(box.width),
                      static_cast<std::uint16_t>(box.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values.data());
    return window;
}

xcb_window_t Desktop::openWindow(const PixelBox& box, std::uint32_t colour) {
    const xcb_window_t window = create(box, colour, false);
    show(window);
    return window;
}

xcb_window_t Desktop::openManagedWindow(const PixelBox& box, std::uint32_t colour, const std::string& title) {
    const xcb_window_t window = create(box, colour, true);
    setTitle(window, title);
    show(window);
    return window;
}

void Desktop::place(xcb_window_t window, const PixelBox& box) {
    const std::array<std::uint32_t, 4> values{static_cast<std::uint32_t>(box.x), static_cast<std::uint32_t>(box.y),
                                              static_cast<std::uint32_t>(box.width),
                                              static_cast<std::uint32_t>(box.height)};
    xcb_configure_window(connection(), window,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         values.data());
    settle();
}

void Desktop::show(xcb_window_t window) {
    xcb_map_window(connection(), window);
    settle();
}

void Desktop::hide(xcb_window_t window) {
    xcb_unmap_window(connection(), window);
    settle();
}

void Desktop::minimise(xcb_window_t window) {
    constexpr std::uint32_t kIconicState = 3;
    xcb_client_message_event_t wish{};
    wish.response_type = XCB_CLIENT_MESSAGE;
    wish.format = 32;
    wish.window = window;
    wish.type = atom("WM_CHANGE_STATE");
    wish.data.data32[0] = kIconicState;
    xcb_send_event(connection(), 0, m_root, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&wish));
    settle();
}

void Desktop::close(xcb_window_t window) {
    xcb_destroy_window(connection(), window);
    settle();
}

xcb_atom_t Desktop::atom(const std::string& name) {
    const auto cookie = xcb_intern_atom(connection(), 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    return owned(xcb_intern_atom_reply(connection(), cookie, nullptr))->atom;
}

void Desktop::setText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, const std::string& text) {
    xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
    settle();
}

void Desktop::setOldTitle(xcb_window_t window, const std::string& title) {
    setText(window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, title);
}
void Desktop::setTitle(xcb_window_t window, const std::string& title) {
    setText(window, atom("_NET_WM_NAME"), atom("UTF8_STRING"), title);
}
void Desktop::setResources(const std::string& resources) {
    setText(m_root, XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, resources);
}

void Desktop::setWords(xcb_window_t window, const std::string& property, const std::vector<std::uint32_t>& words) {
    xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, window, atom(property), XCB_ATOM_CARDINAL, 32,
                        static_cast<std::uint32_t>(words.size()), words.data());
    settle();
}

void Desktop::fill(xcb_window_t window, const PixelBox& box, std::uint32_t colour) {
    xcb_change_gc(connection(), m_ink, XCB_GC_FOREGROUND, &colour);
    const xcb_rectangle_t rectangle = rectangleOf(box);
    xcb_poly_fill_rectangle(connection(), window, m_ink, 1, &rectangle);
}

void Desktop::setPointer(xcb_window_t window, std::uint16_t glyph) {
    const xcb_font_t font = xcb_generate_id(connection());
    xcb_open_font(connection(), font, 6, "cursor");
    const xcb_cursor_t cursor = xcb_generate_id(connection());
    xcb_create_glyph_cursor(connection(), cursor, font, font, glyph, static_cast<std::uint16_t>(glyph + 1), 0, 0, 0,
                            0xffff, 0xffff, 0xffff);
    xcb_change_window_attributes(connection(), window, XCB_CW_CURSOR, &cursor);
    xcb_close_font(connection(), font);
    settle();
}

void Desktop::fake(std::uint8_t type, std::uint8_t detail, int x, int y) {
    xcb_test_fake_input(connection(), type, detail, XCB_CURRENT_TIME, m_root, static_cast<std::int16_t>(x),
                        static_cast<std::int16_t>(y), 0);
    settle();
}

void Desktop::movePointer(int x, int y) { fake(XCB_MOTION_NOTIFY, 0, x, y); }
void Desktop::press(std::uint8_t button) { fake(XCB_BUTTON_PRESS, button, 0, 0); }
void Desktop::release(std::uint8_t button) { fake(XCB_BUTTON_RELEASE, button, 0, 0); }

void Desktop::click(std::uint8_t button) {
    press(button);
    release(button);
}

void Desktop::tapKey(std::uint8_t keycode) {
    fake(XCB_KEY_PRESS, keycode, 0, 0);
    fake(XCB_KEY_RELEASE, keycode, 0, 0);
}

void Desktop::seizeServer() {
    xcb_grab_server(connection());
    settle();
}

void Desktop::releaseServer() {
    xcb_ungrab_server(connection());
    settle();
}

void Desktop::settle() { owned(xcb_get_input_focus_reply(connection(), xcb_get_input_focus(connection()), nullptr)); }

std::vector<std::uint8_t> Desktop::pixels(const PixelBox& box) {
    const xcb_rectangle_t area = rectangleOf(box);
    const auto image = owned(xcb_get_image_reply(
        connection(),
        xcb_get_image(connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, area.x, area.y, area.width, area.height, ~0U),
        nullptr));
    if (!image) return {};
    const std::uint8_t* data = xcb_get_image_data(image.get());
    return {data, data + xcb_get_image_data_length(image.get())};
}

// libxcb 1.15 breaks the connection when it sends SetMonitor itself.
void Desktop::randr(const std::string& arguments) {
    const std::string command = "xrandr --display " + m_display + " " + arguments + " >/dev/null";
    if (std::system(command.c_str()) != 0) std::abort();
}

void Desktop::addMonitor(const std::string& name, const PixelBox& box) {
    // A virtual screen has one output, which the first monitor takes; a later one has none.
    randr("--setmonitor " + name + " " + std::to_string(box.width) + "/200x" + std::to_string(box.height) + "/200+" +
          std::to_string(box.x) + "+" + std::to_string(box.y) + (box.x == 0 ? " screen" : " none"));
}

void Desktop::removeMonitor(const std::string& name) { randr("--delmonitor " + name); }

void Desktop::addMode(PixelSize size) {
    const std::string width = std::to_string(size.width);
    const std::string height = std::to_string(size.height);
    const std::string name = width + "x" + height;
    // A virtual screen has no beam, so the timings only need to be there.
    randr("--newmode " + name + " 60 " + width + " " + width + " " + width + " " + width + " " + height + " " + height +
          " " + height + " " + height);
    randr("--addmode screen " + name);
}

void Desktop::setMode(PixelSize size) {
    randr("--output screen --mode " + std::to_string(size.width) + "x" + std::to_string(size.height));
}

} // namespace morvelin
