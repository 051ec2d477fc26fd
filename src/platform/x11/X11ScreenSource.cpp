#include "platform/x11/X11ScreenSource.h"

#include "platform/x11/Displays.h"
#include "platform/x11/X11ScreenStream.h"
#include "platform/x11/X11WindowStream.h"

namespace morvelin {

Result<std::unique_ptr<X11ScreenSource>, ScreenError> X11ScreenSource::connect(const std::string& display) {
    auto connection = X11Connection::open(display);
    if (!connection) return passOn(std::move(connection));
    return std::unique_ptr<X11ScreenSource>(new X11ScreenSource(std::move(*connection)));
}

Result<std::vector<Display>, ScreenError> X11ScreenSource::displays() { return displaysOf(m_connection); }

std::optional<PixelBox> X11ScreenSource::windowFrame(WindowID id) {
    const auto place = m_windows.place(id, X11Windows::Patience::Short);
    if (!place || !place->isShown) return std::nullopt;
    return place->frame;
}

Result<std::unique_ptr<ScreenStream>, ScreenError> X11ScreenSource::open(const ScreenStreamOptions& options) {
    auto connection = X11Connection::open(m_connection.display());
    if (!connection) return passOn(std::move(connection));
    if (options.window) return X11WindowStream::open(std::move(*connection), options);
    return X11ScreenStream::open(std::move(*connection), options);
}

} // namespace morvelin
