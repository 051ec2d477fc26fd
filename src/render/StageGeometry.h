// Where the picture and its background lie on the output at a zoom and a pan. Pure values, origin top-left.
#pragma once

#include "core/Geometry.h"
#include "platform/Picture.h"
#include "timeline/DenseCurve.h"

namespace morvelin {

struct CompositionInstruction;

/// A rectangle in output pixels with sub-pixel edges.
struct Rectangle {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const Rectangle&) const = default;
    [[nodiscard]] double right() const { return x + width; }
    [[nodiscard]] double bottom() const { return y + height; }
    [[nodiscard]] double smallerSide() const { return width < height ? width : height; }
    [[nodiscard]] Rectangle intersected(const Rectangle& other) const;
};

/// How the stage (the output at zoom 1) is seen: a stage point `p` shows at `p * zoom - offset`.
struct Camera {
    double zoom = 1; ///< at least 1
    double offsetX = 0;
    double offsetY = 0;

    bool operator==(const Camera&) const = default;
};

/// The stage under one camera.
struct StageGeometry {
    Camera camera;
    Rectangle videoRect;     ///< where the picture lies at zoom 1
    Rectangle frameRect;     ///< where the picture lies as magnified; may reach far outside the output
    double cornerRadius = 0; ///< of `frameRect`, in output pixels
    bool showsPicture = false;
    bool castsShadow = false;

    bool operator==(const StageGeometry&) const = default;

    /// The output place of a point of capture space.
    [[nodiscard]] NormalizedPoint outputPoint(double x, double y) const {
        return {frameRect.x + x * frameRect.width, frameRect.y + y * frameRect.height};
    }
    /// The output rectangle of one in capture space.
    [[nodiscard]] Rectangle outputRectangle(const NormalizedRect& rect) const;
};

/// The largest rectangle of the recording's aspect inside the padded output, centred. A recording without area takes
/// the output's aspect.
[[nodiscard]] Rectangle videoRectangle(PixelSize video, PixelSize output, double padding);

/// The stage as the camera curve's `view` shows it. Zoom and pan are rounded to steps far below what can be seen, so
/// that a camera at rest gives equal values.
[[nodiscard]] StageGeometry stageGeometry(const CompositionInstruction& instruction, const DenseZoomFrame& view);

} // namespace morvelin
