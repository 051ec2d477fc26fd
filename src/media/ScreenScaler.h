// Scales a screen or a window that is too large for a movie down to what fits. Owned by a video track or a stream.
#pragma once

#include <vector>

#include "platform/Picture.h"

namespace morvelin {

/// Each pixel of the smaller picture is the mean of the area that it covers; only what changed is computed anew.
class ScreenScaler {
public:
    /// `to` is not larger than `from`.
    ScreenScaler(PixelSize from, PixelSize to);

    /// Scales the pixels inside `box`; gives the box of the smaller picture that may have changed.
    PixelBox update(const ScreenPixels& source, const PixelBox& box);
    /// The smaller picture.
    [[nodiscard]] ScreenPixels pixels() const;

private:
    /// The source pixels on one axis that one pixel covers: all wholly but for the first and the last.
    struct Span {
        int first = 0;
        int last = 0;
        float firstWeight = 1;
        float lastWeight = 1;

        [[nodiscard]] float weight(int pixel) const {
            return pixel == first ? firstWeight : pixel == last ? lastWeight : 1;
        }
    };

    static std::vector<Span> spans(int from, int to);
    void average(const ScreenPixels& source, int x, int y);

    PixelSize m_from;
    PixelSize m_to;
    std::vector<Span> m_columns;
    std::vector<Span> m_rows;
    std::vector<std::uint8_t> m_pixels; ///< 4 × width × height bytes
};

} // namespace morvelin
