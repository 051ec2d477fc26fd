// How large a take's movie is, how many bits it gets, and which part of the desktop it shows. Pure rules.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "capture/CaptureError.h"
#include "capture/CaptureTarget.h"
#include "core/base/Result.h"
#include "platform/Screen.h"

namespace morvelin {

/// No side of a movie is longer, in pixels.
inline constexpr int kMaxCaptureDimension = 7680;

/// What a take shows, resolved from its target.
struct CaptureGeometry {
    PixelBox area;       ///< desktop pixels that are captured; of a window, as the take begins
    PixelSize movieSize; ///< even; smaller than the area only where a side would be too long
    double pointPixelScale = 1;
    std::string displayID;            ///< the display that must stay; empty for a window, which may go to another
    std::optional<WindowID> windowID; ///< where one window is captured

    [[nodiscard]] double pointWidth() const { return area.width / pointPixelScale; }
    [[nodiscard]] double pointHeight() const { return area.height / pointPixelScale; }
};

/// What the desktop has to show.
struct CaptureChoices {
    std::vector<Display> displays;
    std::vector<DesktopWindow> windows; ///< the frontmost first
};

/// Finds the target among the choices. An odd column or row at the edge is left out rather than scaled away, which
/// would blur every pixel.
Result<CaptureGeometry, CaptureError> resolveTarget(const CaptureTarget& target, const CaptureChoices& choices);

/// The window that is meant: the one with the id, or else the frontmost with exactly this title in any case, or else the
/// frontmost whose title contains it. Null where there is none.
[[nodiscard]] const DesktopWindow* findWindow(const WindowTarget& target, std::span<const DesktopWindow> windows);

/// The movie's size for content of so many pixels: no side above `kMaxCaptureDimension`, each at least 2 and even.
[[nodiscard]] PixelSize movieSizeFor(PixelSize content);

/// Bits per second for a movie of this size: 0.15 for each pixel of 60 frames, within 12 to 120 million.
[[nodiscard]] std::int64_t captureBitRate(PixelSize size);

} // namespace morvelin
