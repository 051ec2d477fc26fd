// Where a picture lies on an output, sample by sample of each plane. A value that scaling and blurring start from.
#pragma once

#include "platform/Picture.h"
#include "render/PlaneScaling.h"
#include "render/StageGeometry.h"

namespace morvelin {

struct PicturePlacement {
    Rectangle frame; ///< of the whole picture, in output pixels
    PixelSize picture;
    Subsampling pictureSubsampling = Subsampling::Quarter;
    PixelSize output;
    Subsampling outputSubsampling = Subsampling::Quarter;

    bool operator==(const PicturePlacement&) const = default;

    [[nodiscard]] double scaleX() const { return frame.width / picture.width; }
    [[nodiscard]] double scaleY() const { return frame.height / picture.height; }
    [[nodiscard]] PlaneGrid outputGrid(int plane) const { return planeGrid(plane, outputSubsampling); }
    /// Which samples of the picture a plane's output samples show.
    [[nodiscard]] AxisMapping mappingX(int plane) const;
    [[nodiscard]] AxisMapping mappingY(int plane) const;
    /// The size of the picture's plane in samples.
    [[nodiscard]] PixelSize pictureSamples(int plane) const;
    /// The output's samples of a plane that the picture has a share in, with some to spare.
    [[nodiscard]] PixelBox visibleSamples(int plane) const;
    /// The output pixels that a box of the picture's pixels covers, grown by `reach` pixels of the picture and one of
    /// the output.
    [[nodiscard]] PixelBox outputBox(const PixelBox& box, double reach) const;
};

/// Every pixel of an output that a rectangle touches.
[[nodiscard]] PixelBox touchedPixels(const Rectangle& rect, PixelSize output);

/// The values that a plane's samples may have.
[[nodiscard]] constexpr SampleRange sampleRange(int plane) {
    return plane == 0 ? SampleRange{16, 235} : SampleRange{16, 240};
}

} // namespace morvelin
