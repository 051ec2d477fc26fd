// The pointer of an X desktop. Owned by the program's composition; all on the main thread.
#pragma once

#include <map>

#include "platform/Pointer.h"
#include "platform/x11/X11Connection.h"

namespace morvelin {

class X11PointerSource final : public PointerSource {
public:
    /// Connects to `display`, or to the one that $DISPLAY names where it is empty.
    static Result<std::unique_ptr<X11PointerSource>, ScreenError> connect(const std::string& display);

    [[nodiscard]] std::optional<DesktopPoint> location() override;
    [[nodiscard]] std::optional<std::uint64_t> shapeIdentity() override;
    [[nodiscard]] std::optional<PointerShape> shape() override;
    [[nodiscard]] std::optional<PointerShape> arrow() override;
    [[nodiscard]] EventLoop::Timer onButton(EventLoop& loop,
                                            std::function<void(const PointerButtonEvent&)> action) override;

private:
    explicit X11PointerSource(X11Connection connection);

    void readEvents();
    [[nodiscard]] std::string theme() const;
    [[nodiscard]] int nominalSize() const;

    X11Connection m_connection;
    std::uint8_t m_fixesEvent = 0;
    std::optional<std::uint64_t> m_serial;              ///< of the pointer image now showing
    std::map<std::uint64_t, PointerShape> m_seenShapes; ///< by serial: looking up a theme's images reads files
};

} // namespace morvelin
