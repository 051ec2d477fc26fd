// How a window's picture lies in a movie that keeps its size while the window changes its own. Pure rules, shared by the
// stream that draws it and the tracker that places the pointer in it.
#pragma once

#include <algorithm>
#include <cmath>

#include "platform/Picture.h"

namespace morvelin {

struct WindowFit {
    PixelBox place;   ///< of the window in the picture
    double scale = 1; ///< picture pixels for each of the window's; never above 1
};

/// The whole window in the middle of the picture: at its own size, or made smaller where it has grown past the picture.
/// Sides and corner are even, so that a window that keeps its size is never resampled.
[[nodiscard]] inline WindowFit fitWindow(PixelSize window, PixelSize picture) {
    const PixelSize content{std::max(window.width & ~1, 2), std::max(window.height & ~1, 2)};
    const double scale = std::min({1.0, static_cast<double>(picture.width) / content.width,
                                   static_cast<double>(picture.height) / content.height});
    const auto side = [scale](int length, int room) {
        return std::clamp(static_cast<int>(std::lround(length * scale)) & ~1, 2, room);
    };
    const PixelSize shown{side(content.width, picture.width), side(content.height, picture.height)};
    return {
        {(picture.width - shown.width) / 2 & ~1, (picture.height - shown.height) / 2 & ~1, shown.width, shown.height},
        scale};
}

/// The box of the desktop that the whole picture stands for while the window lies at `frame`.
[[nodiscard]] inline PixelBox desktopBoxOfPicture(const PixelBox& frame, PixelSize picture) {
    const WindowFit fit = fitWindow({frame.width, frame.height}, picture);
    const auto onDesktop = [&](int length) { return static_cast<int>(std::lround(length / fit.scale)); };
    return {frame.x - onDesktop(fit.place.x), frame.y - onDesktop(fit.place.y), onDesktop(picture.width),
            onDesktop(picture.height)};
}

} // namespace morvelin
