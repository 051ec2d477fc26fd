// The named operation "screen stream": which displays there are, and their changing pictures.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/base/Result.h"
#include "core/base/Time.h"
#include "platform/Picture.h"

namespace morvelin {

/// Why the screen can't be captured; `detail` is a whole sentence that tells a user what to do.
struct ScreenError {
    enum class Kind {
        NoDisplayServer,
        DisplayNotFound,
        WindowClosed,
        MissingExtension,
        UnsupportedPixels,
        ConnectionLost
    };

    Kind kind = Kind::NoDisplayServer;
    std::string detail;

    [[nodiscard]] std::string description() const { return detail; }
};

/// One display of the desktop, in pixels of the whole desktop's coordinates (origin top-left).
struct Display {
    std::string id; ///< stable while the display is there, e.g. "eDP-1"
    PixelBox frame;
    double pointPixelScale = 1;
    bool isPrimary = false;
};

/// A desktop's own number for a window; once the window is closed another one may get it.
using WindowID = std::uint32_t;

/// A window that shows on the desktop.
struct DesktopWindow {
    WindowID id = 0;
    std::string title;
    std::string application; ///< what its program calls itself; may be empty
    PixelBox frame;          ///< its own picture in desktop pixels, without what the desktop draws around it
};

/// A moment of the screen: the whole picture as it now is, and the boxes that changed since the moment before.
struct ScreenFrame {
    HostTime time;                     ///< when the pixels were fetched
    ScreenPixels pixels;               ///< valid during the call
    std::span<const PixelBox> changed; ///< relative to `pixels`; the first frame changes everything
};

/// A running stream of a picture on the desktop, without the pointer. Frames come only when something changed.
class ScreenStream {
public:
    virtual ~ScreenStream() = default;

    [[nodiscard]] virtual PixelSize size() const = 0;
    /// Waits until the screen has changed, at most `timeout`, and hands over the new frame; the first call has a frame at
    /// once. Gives false on a time-out or an interruption. On the capturing thread only; never more often than the rate
    /// it was opened with.
    virtual Result<bool, ScreenError> next(Seconds timeout, const std::function<void(const ScreenFrame&)>& take) = 0;
    /// From now on frames come no more often than this. On the capturing thread.
    virtual void pace(Seconds minimumFrameInterval) = 0;
    /// From any thread: ends the `next` that waits, or else the next one that would.
    virtual void interrupt() = 0;
    /// From any thread: ends a `next` that waits for a desktop which doesn't answer, with `ConnectionLost`. Nothing comes
    /// from the stream afterwards.
    virtual void cut() = 0;
};

/// What a stream shows.
struct ScreenStreamOptions {
    PixelBox area;         ///< in desktop pixels
    std::string displayID; ///< the stream ends with `DisplayNotFound` when this display goes; empty: it watches none
    /// The stream shows this window's own picture, wherever it is and whatever covers it: at its size, in the middle of a
    /// black picture of the area's size, or made smaller where it has grown past that. It ends with `WindowClosed`.
    std::optional<WindowID> window{};
    Seconds minimumFrameInterval{1.0 / 60};
};

/// The desktop's displays and streams of them.
class ScreenSource {
public:
    virtual ~ScreenSource() = default;
    /// On the main thread.
    virtual Result<std::vector<Display>, ScreenError> displays() = 0;
    /// The windows that show, the frontmost first. On the main thread.
    virtual Result<std::vector<DesktopWindow>, ScreenError> windows() = 0;
    /// Where a window's picture now is; nothing where it doesn't show, or the desktop doesn't answer at once. On the main
    /// thread.
    [[nodiscard]] virtual std::optional<PixelBox> windowFrame(WindowID id) = 0;
    /// From any thread.
    virtual Result<std::unique_ptr<ScreenStream>, ScreenError> open(const ScreenStreamOptions& options) = 0;
};

} // namespace morvelin
