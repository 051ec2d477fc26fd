// A small drawing surface: the one place where Cairo draws shapes. What is drawn becomes a sprite of an overlay.
#pragma once

#include <memory>
#include <variant>
#include <vector>

#include "core/Geometry.h"
#include "platform/Picture.h"
#include "render/VectorPath.h"

struct _cairo;

namespace morvelin {

struct GradientStop {
    double at = 0; ///< 0..1 of the way
    CodableColor color;
};

struct LinearGradient {
    PathPoint from;
    PathPoint to;
    std::vector<GradientStop> stops;
};

struct RadialGradient {
    PathPoint center;
    double radius = 0;
    std::vector<GradientStop> stops;
};

/// What an area or a line is filled with.
using Paint = std::variant<CodableColor, LinearGradient, RadialGradient>;

/// How a drawing lies on a canvas: scaled, then turned clockwise, then moved.
struct DrawingPlacement {
    PathPoint origin;
    double scale = 1;
    double angle = 0; ///< radians
};

/// A surface over a box of the output; places are in output pixels, unless they are drawn inside a placement.
class Canvas {
public:
    /// How true curves are drawn.
    enum class Curves {
        Exact, ///< to what one level of opacity shows
        Quick  ///< to what an eye can see, in half the time
    };

    explicit Canvas(const PixelBox& box, Curves curves = Curves::Exact);
    Canvas(Canvas&&) noexcept;
    Canvas& operator=(Canvas&&) noexcept;
    ~Canvas();

    void fill(const VectorPath& path, const Paint& paint);
    /// A line with round joins and ends.
    void stroke(const VectorPath& path, double lineWidth, const Paint& paint);
    void strokeCircle(double centerX, double centerY, double diameter, double lineWidth, const CodableColor& color);

    /// Calls `draw` while places, lengths and gradients are as placed.
    template <class Draw>
    void placed(const DrawingPlacement& placement, const Draw& draw) {
        enter(placement);
        draw();
        leave();
    }
    /// Calls `draw` while only the inside of `shape` takes colour.
    template <class Draw>
    void clipped(const VectorPath& shape, const Draw& draw) {
        enter(shape);
        draw();
        leave();
    }

    /// For text, which a library of its own draws.
    [[nodiscard]] _cairo* context() const;

    /// What has been drawn; empty when the surface could not be made.
    [[nodiscard]] Image image() const;

private:
    void enter(const DrawingPlacement& placement);
    void enter(const VectorPath& clip);
    void leave();

    struct Surface;
    std::unique_ptr<Surface> m_surface;
};

} // namespace morvelin
