// The displays of an X server and streams of them. Owned by the program's composition.
#pragma once

#include "platform/x11/X11Connection.h"
#include "platform/x11/X11Windows.h"

namespace morvelin {

class X11ScreenSource final : public ScreenSource {
public:
    /// Connects to `display`, or to the one that $DISPLAY names where it is empty.
    static Result<std::unique_ptr<X11ScreenSource>, ScreenError> connect(const std::string& display);

    Result<std::vector<Display>, ScreenError> displays() override;
    Result<std::vector<DesktopWindow>, ScreenError> windows() override { return m_windows.shown(); }
    std::optional<PixelBox> windowFrame(WindowID id) override;
    /// Each stream has a connection of its own, so it may run on another thread.
    Result<std::unique_ptr<ScreenStream>, ScreenError> open(const ScreenStreamOptions& options) override;

private:
    explicit X11ScreenSource(X11Connection connection) : m_connection(std::move(connection)), m_windows(m_connection) {}

    X11Connection m_connection;
    X11Windows m_windows;
};

} // namespace morvelin
