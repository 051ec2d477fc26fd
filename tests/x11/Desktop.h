// A client that makes a test's desktop: windows with things drawn in them, and a hand on pointer and buttons.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <xcb/xcb.h>

#include "platform/Picture.h"

namespace morvelin {

class Desktop {
public:
    explicit Desktop(const std::string& display);

    [[nodiscard]] xcb_connection_t* connection() const { return m_connection.get(); }
    [[nodiscard]] xcb_window_t root() const { return m_root; }

    /// A window without a frame that shows at once, filled with a colour (0xRRGGBB).
    xcb_window_t openWindow(const PixelBox& box, std::uint32_t colour);
    void fill(xcb_window_t window, const PixelBox& box, std::uint32_t colour);
    /// One of the server's own pointer images, by its glyph number in the pointer font.
    void setPointer(xcb_window_t window, std::uint16_t glyph);

    void movePointer(int x, int y);
    void press(std::uint8_t button);
    void release(std::uint8_t button);
    void click(std::uint8_t button);

    /// Returns when the server has done all that was asked.
    void settle();
    /// A part of the screen, 4 bytes for each pixel.
    [[nodiscard]] std::vector<std::uint8_t> pixels(const PixelBox& box);

    /// Adds a monitor of that name and place to the desktop.
    void addMonitor(const std::string& name, const PixelBox& box);
    void removeMonitor(const std::string& name);
    /// Lets the screen have another size, which is not above the one it began with.
    void addMode(PixelSize size);
    void setMode(PixelSize size);

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    void fake(std::uint8_t type, std::uint8_t detail, int x, int y);
    void randr(const std::string& arguments);

    std::string m_display;
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    xcb_window_t m_root = 0;
    xcb_gcontext_t m_ink = 0;
};

} // namespace morvelin
