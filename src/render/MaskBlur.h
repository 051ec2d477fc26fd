// The blur under one mask, made of the recording's own samples at the output's scale. Owned by a video layer.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "platform/Picture.h"
#include "render/FramePlan.h"
#include "render/PicturePlacement.h"
#include "render/PlaneScaling.h"
#include "render/RoundedCoverage.h"

namespace morvelin {

/// A Gaussian of any width at a bounded price: a wide one is worked out on a grid of three nodes to a deviation and
/// magnified from there. Nothing is lost, as a blurred picture holds no finer detail.
class MaskBlur {
public:
    MaskBlur(const MaskPlacement& mask, const PicturePlacement& placement);

    /// The output pixels under the mask that change with the picture's pixels in `box`.
    [[nodiscard]] PixelBox reachOf(const PixelBox& box) const;

    /// To be called when the picture is another one than in the calls before.
    void forgetPicture();
    /// Blurs what lies under the mask in `box` (samples of the plane), for the calls of `layOver` that follow.
    void blur(int plane, const PlaneView<const std::uint8_t>& picture, const PixelBox& box);
    /// Lays the blurred samples over the row `y` of that plane; `row` holds the samples of the last `blur`'s box.
    void layOver(int y, std::uint8_t* row);

private:
    /// How luma, or chroma, is blurred.
    struct Kind {
        PixelBox samples;    ///< of the output's plane, under the mask
        int spacing = 1;     ///< output samples from node to node; 1: no grid
        PixelSize nodes;     ///< the grid's size
        PlaneTaps toBlurred; ///< from the picture to the grid, or to the output where there is none
        PlaneTaps toOutput;  ///< from the grid to the output
        Coverage coverage;
    };

    [[nodiscard]] Kind makeKind(int plane) const;
    void fillGrid(const Kind& kind, const PlaneView<const std::uint8_t>& picture, DeepPlane& grid);

    MaskPlacement m_mask;
    PicturePlacement m_placement;
    PixelBox m_pixels;
    std::array<Kind, 2> m_kinds;
    std::array<DeepPlane, 3> m_grids; ///< empty until a plane is blurred
    std::size_t m_kind = 0;           ///< of the last `blur`
    PixelBox m_box;                   ///< of the last `blur`
    PixelBox m_part;                  ///< of `m_box`, blurred
    std::vector<std::uint8_t> m_blurred;
    ScalingScratch m_scratch;
};

} // namespace morvelin
