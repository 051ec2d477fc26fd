// Draws the changed pixels of frames in a palette's few colours, over what is already shown. Owned by a GIF's writer.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "media/ColorPalette.h"
#include "media/GIFFile.h"

namespace morvelin {

/// Colours of a box, rows packed; where alpha is 0 the frame is as the one before.
struct FrameChange {
    PixelBox box; ///< empty when nothing has changed
    std::vector<PixelColor> pixels;
};

/// Spreads each pixel's error over its neighbours by the light form of Sierra's filter, which is the one that FFmpeg's
/// filter takes where it is not told: half to the right, a quarter each below and left of that.
class GIFDithering {
public:
    explicit GIFDithering(PixelSize size);

    /// The image that shows the change; valid until the next one. Pixels that have their colour already stay out of it.
    [[nodiscard]] GIFImage draw(const FrameChange& change, NearestColor& nearest);

private:
    struct Error {
        int blue = 0, green = 0, red = 0;
    };

    /// Draws one row; gives its first column that has changed, and the one after the last.
    std::pair<int, int> drawRow(const FrameChange& change, int y, NearestColor& nearest);

    PixelSize m_size;
    std::vector<PixelColor> m_shown;     ///< the whole picture
    std::vector<std::uint8_t> m_numbers; ///< of the box
    std::vector<Error> m_errors;         ///< for this row, one column left of the box and one right of it
    std::vector<Error> m_errorsBelow;
};

} // namespace morvelin
