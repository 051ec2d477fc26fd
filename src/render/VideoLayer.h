// The recording's picture, scaled, masked and with rounded corners. Owned by a compositor.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/Picture.h"
#include "render/FramePlan.h"
#include "render/MaskBlur.h"
#include "render/PicturePlacement.h"
#include "render/PlaneScaling.h"
#include "render/RoundedCoverage.h"

namespace morvelin {

class VideoLayer {
public:
    VideoLayer(PixelSize output, Subsampling subsampling);

    /// Aims at a plan and a picture; costs nothing while camera and masks stand still.
    void prepare(const FramePlan& plan, const Picture& picture);
    /// To be called when the picture is another one than before.
    void forgetPicture();
    /// Draws what shows of the picture in `box`, over what is there.
    void draw(const Picture& picture, const PixelBox& box, Picture& out);

    /// Adds the output's pixels that change with the picture's pixels in `box`.
    void addReach(const PixelBox& box, std::vector<PixelBox>& boxes) const;

private:
    void prepareTaps(int plane);
    void drawPlane(int plane, const PlaneView<const std::uint8_t>& picture, const PixelBox& box, Picture& out);
    void mixSamples(int plane, const ColumnTaps& rows, const CoverageRow& covered, const PixelBox& run,
                    std::uint8_t* to);
    const PhaseTable& phasesFor(double step);

    /// A kernel's table and the step that it was made for.
    struct SteppedPhases {
        double step = 0;
        PhaseTable table;
    };

    PixelSize m_output;
    Subsampling m_subsampling;
    bool m_isVisible = false;
    PicturePlacement m_placement;
    RoundedRectangle m_shape;
    std::array<SteppedPhases, 2> m_phases; ///< magnified, reduced
    std::array<PlaneTaps, 2> m_taps;       ///< luma, chroma
    std::array<PixelBox, 2> m_samples;     ///< that the taps are of
    std::array<Coverage, 2> m_coverage;
    std::vector<MaskPlacement> m_maskPlacements;
    std::vector<MaskBlur> m_masks;
    ScalingScratch m_scratch;
    std::vector<std::uint8_t> m_row;
};

} // namespace morvelin
