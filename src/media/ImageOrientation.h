// How a camera was held when it took a picture, and the picture turned upright.
#pragma once

#include "platform/Picture.h"

struct AVFrame;

namespace morvelin {

struct ImageOrientation {
    bool isMirrored = false; ///< left and right; undone before the turn
    int quarterTurns = 0;    ///< clockwise, 0 to 3

    /// The size after the turn, and also before it.
    [[nodiscard]] PixelSize turned(PixelSize size) const {
        return quarterTurns % 2 == 0 ? size : PixelSize{size.height, size.width};
    }
};

/// What the file says of it; upright when it says nothing.
[[nodiscard]] ImageOrientation orientationOf(const AVFrame& frame);

[[nodiscard]] Image upright(const Image& image, const ImageOrientation& orientation);

} // namespace morvelin
