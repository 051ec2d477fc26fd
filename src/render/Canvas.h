// A small drawing surface: the one place where Cairo is called. What is drawn becomes a sprite of an overlay.
#pragma once

#include <memory>

#include "core/Geometry.h"
#include "platform/Picture.h"

namespace morvelin {

/// A surface over a box of the output; all places are in output pixels.
class Canvas {
public:
    explicit Canvas(const PixelBox& box);
    Canvas(Canvas&&) noexcept;
    Canvas& operator=(Canvas&&) noexcept;
    ~Canvas();

    void strokeCircle(double centerX, double centerY, double diameter, double lineWidth, const CodableColor& color);

    /// What has been drawn; empty when the surface could not be made.
    [[nodiscard]] Image image() const;

private:
    struct Surface;
    std::unique_ptr<Surface> m_surface;
};

} // namespace morvelin
