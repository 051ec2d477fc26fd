#include "platform/x11/X11ScreenSource.h"

#include "platform/x11/Displays.h"
#include "platform/x11/X11ScreenStream.h"

namespace morvelin {

Result<std::unique_ptr<X11ScreenSource>, ScreenError> X11ScreenSource::connect(const std::string& display) {
    auto connection = X11Connection::open(display);
    if (!connection) return passOn(std::move(connection));
    return std::unique_ptr<X11ScreenSource>(new X11ScreenSource(std::move(*connection)));
}

Result<std::vector<Display>, ScreenError> X11ScreenSource::displays() { return displaysOf(m_connection); }

Result<std::unique_ptr<ScreenStream>, ScreenError> X11ScreenSource::open(const ScreenStreamOptions& options) {
    auto connection = X11Connection::open(m_connection.display());
    if (!connection) return passOn(std::move(connection));
    return X11ScreenStream::open(std::move(*connection), options);
}

} // namespace morvelin
