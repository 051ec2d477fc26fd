// The named operation "pointer": where it is, what it looks like, and when its buttons go down and up.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "core/CursorEvent.h"
#include "core/base/EventLoop.h"
#include "core/base/Time.h"
#include "platform/Picture.h"

namespace morvelin {

/// A place on the desktop in pixels, origin top-left.
struct DesktopPoint {
    double x = 0;
    double y = 0;
};

/// The image that the pointer shows. The image may hold more pixels than the pointer covers on the desktop: a
/// magnified video then draws it crisply.
struct PointerShape {
    std::uint64_t identity = 0; ///< equal while the system shows the same pointer object
    Image image;
    double width = 0; ///< what the pointer covers, in desktop pixels
    double height = 0;
    double hotSpotX = 0; ///< desktop pixels from its left
    double hotSpotY = 0;
};

/// A button that went down or up.
struct PointerButtonEvent {
    HostTime time; ///< when it happened, not when it was delivered
    DesktopPoint location;
    CursorEventType event = CursorEventType::MouseDown;
    MouseButton button = MouseButton::Left;
    std::int64_t clickCount = 1; ///< 2 for the second press of a double click
};

/// The desktop's pointer. All on the main thread.
class PointerSource {
public:
    virtual ~PointerSource() = default;

    /// Nothing when the desktop can't be asked any more.
    [[nodiscard]] virtual std::optional<DesktopPoint> location() = 0;
    /// The identity of the pointer object now showing: cheap, asked 30 times a second.
    [[nodiscard]] virtual std::optional<std::uint64_t> shapeIdentity() = 0;
    /// The image now showing; nothing when there is none.
    [[nodiscard]] virtual std::optional<PointerShape> shape() = 0;
    /// The plain arrow of the desktop's pointer theme.
    [[nodiscard]] virtual std::optional<PointerShape> arrow() = 0;
    /// Calls `action` for every press and release anywhere, until the timer goes.
    [[nodiscard]] virtual EventLoop::Timer onButton(EventLoop& loop,
                                                    std::function<void(const PointerButtonEvent&)> action) = 0;
};

} // namespace morvelin
