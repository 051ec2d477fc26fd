// The lowest layer of a frame: the stage image as the camera sees it, drawn only where the picture doesn't hide it.
// Owned by a compositor.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "platform/Picture.h"
#include "render/PlaneScaling.h"
#include "render/StageGeometry.h"
#include "render/StageImage.h"

namespace morvelin {

class StageLayer {
public:
    explicit StageLayer(std::shared_ptr<const StageImage> image);

    [[nodiscard]] const std::shared_ptr<const StageImage>& image() const { return m_image; }

    /// Aims at a stage; costs nothing while the camera stands still.
    void prepare(const StageGeometry& stage);
    /// Draws the parts of `box` in which anything of the stage shows.
    void draw(const PixelBox& box, Picture& out);

private:
    void drawPart(const PixelBox& box, Picture& out);

    std::shared_ptr<const StageImage> m_image;
    StageGeometry m_stage;
    PhaseTable m_phases;
    std::array<PlaneTaps, 2> m_taps; ///< luma, chroma; empty while the camera shows the stage as it is
    ScalingScratch m_scratch;
};

/// The parts of `box` that the picture doesn't wholly cover, as boxes that don't overlap; at even coordinates, and with
/// a seam of some pixels under the picture's edges.
[[nodiscard]] std::vector<PixelBox> outsidePicture(const StageGeometry& stage, const PixelBox& box);

} // namespace morvelin
