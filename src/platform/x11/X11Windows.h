// The windows of an X desktop: which show, what they are called, where their pictures are. Owned by whoever asks.
#pragma once

#include <vector>

#include "platform/x11/X11Connection.h"

namespace morvelin {

/// A window's own picture: without the window manager's frame, and without the shadow that some programs draw around it.
struct WindowPlace {
    PixelBox frame; ///< on the desktop, in pixels
    int insetX = 0; ///< of the picture's corner in the window, inside its border
    int insetY = 0;
    int border = 0; ///< width of the border around the window
    int depth = 0;  ///< bits of a pixel
    bool isShown = false;
};

/// Asks over a connection that must outlive it.
class X11Windows {
public:
    using Patience = X11Connection::Patience;

    explicit X11Windows(const X11Connection& connection);

    /// Those that show, the frontmost first: what the window manager lists, or without one all that lie on the root.
    [[nodiscard]] Result<std::vector<DesktopWindow>, ScreenError> shown() const;
    /// Nothing where the window is gone, or where the server lets a short patience end.
    [[nodiscard]] std::optional<WindowPlace> place(xcb_window_t window, Patience patience) const;
    /// The windows around it, up to the one that lies on the root.
    [[nodiscard]] std::vector<xcb_window_t> ancestors(xcb_window_t window) const;
    /// What the window calls itself; may be empty.
    [[nodiscard]] std::string title(xcb_window_t window) const;

private:
    struct PlaceQuestions;

    [[nodiscard]] PlaceQuestions askPlace(xcb_window_t window) const;
    [[nodiscard]] std::optional<WindowPlace> answered(const PlaceQuestions& questions, Patience patience) const;
    [[nodiscard]] std::vector<xcb_window_t> stackedFromTop() const;

    const X11Connection& m_connection;
    xcb_atom_t m_clientListStacking = XCB_ATOM_NONE;
    xcb_atom_t m_title = XCB_ATOM_NONE;
    xcb_atom_t m_utf8 = XCB_ATOM_NONE;
    xcb_atom_t m_shadow = XCB_ATOM_NONE;
};

} // namespace morvelin
