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
    /// A window that a window manager puts a frame around.
    xcb_window_t openManagedWindow(const PixelBox& box, std::uint32_t colour, const std::string& title);
    void place(xcb_window_t window, const PixelBox& box);
    void show(xcb_window_t window);
    void hide(xcb_window_t window);
    /// Asks the window manager to minimise the window.
    void minimise(xcb_window_t window);
    void close(xcb_window_t window);
    /// The title that old programs set; in Latin-1.
    void setOldTitle(xcb_window_t window, const std::string& title);
    void setTitle(xcb_window_t window, const std::string& title);
    void setWords(xcb_window_t window, const std::string& property, const std::vector<std::uint32_t>& words);
    /// The X resources of the desktop, such as "Xft.dpi:\t192\n".
    void setResources(const std::string& resources);
    void fill(xcb_window_t window, const PixelBox& box, std::uint32_t colour);
    /// One of the server's own pointer images, by its glyph number in the pointer font.
    void setPointer(xcb_window_t window, std::uint16_t glyph);

    void movePointer(int x, int y);
    void press(std::uint8_t button);
    void release(std::uint8_t button);
    void click(std::uint8_t button);
    void tapKey(std::uint8_t keycode);

    /// Keeps the server from doing anything for others.
    void seizeServer();
    void releaseServer();

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

    xcb_window_t create(const PixelBox& box, std::uint32_t colour, bool isManaged);
    [[nodiscard]] xcb_atom_t atom(const std::string& name);
    void setText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, const std::string& text);
    void fake(std::uint8_t type, std::uint8_t detail, int x, int y);
    void randr(const std::string& arguments);

    std::string m_display;
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    xcb_window_t m_root = 0;
    xcb_gcontext_t m_ink = 0;
};

} // namespace morvelin
