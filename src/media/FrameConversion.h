// Decoded frames as pictures of the system's one form: 4:2:0, BT.709, limited range. Owned by a reader.
#pragma once

#include <memory>

#include "media/FFmpegHandles.h"
#include "platform/Picture.h"

namespace morvelin {

/// Makes pictures of decoded frames. A frame that has the form already is wrapped, not copied; others (10 bit, 4:4:4,
/// full range, BT.601, RGB) are converted, and turned when the movie says that it was filmed on the side.
class FrameConverter {
public:
    /// `quarterTurns` clockwise, 0 to 3.
    explicit FrameConverter(int quarterTurns = 0) : m_quarterTurns(quarterTurns) {}

    /// The size in which frames of `coded` size are shown: even sides, after the turn.
    [[nodiscard]] PixelSize shownSize(PixelSize coded) const;
    /// Nothing when the frame's pixel format can't be converted.
    [[nodiscard]] std::shared_ptr<const Picture> convert(FrameHandle frame);

private:
    [[nodiscard]] std::shared_ptr<Picture> converted(const AVFrame& frame);

    int m_quarterTurns;
    ScalerHandle m_scaler; ///< kept from frame to frame while the form stays
};

/// The picture turned by quarters, clockwise.
[[nodiscard]] Picture rotated(const Picture& picture, int quarterTurns);

} // namespace morvelin
