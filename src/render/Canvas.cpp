#include "render/Canvas.h"

#include <cstring>
#include <numbers>

#include <cairo.h>

namespace morvelin {

namespace {

/// Curves may be off by this many pixels; the library's own 0.1 shows on small circles.
constexpr double kTolerance = 0.01;

struct DestroySurface {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct DestroyContext {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};

} // namespace

struct Canvas::Surface {
    PixelSize size;
    std::unique_ptr<cairo_surface_t, DestroySurface> surface;
    std::unique_ptr<cairo_t, DestroyContext> context;

    explicit Surface(const PixelBox& box)
        : size{box.width, box.height},
          surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, box.width, box.height)),
          context(cairo_create(surface.get())) {
        cairo_set_antialias(context.get(), CAIRO_ANTIALIAS_BEST);
        cairo_set_tolerance(context.get(), kTolerance);
        cairo_translate(context.get(), -box.x, -box.y);
    }
};

Canvas::Canvas(const PixelBox& box) : m_surface(std::make_unique<Surface>(box)) {}
Canvas::Canvas(Canvas&&) noexcept = default;
Canvas& Canvas::operator=(Canvas&&) noexcept = default;
Canvas::~Canvas() = default;

void Canvas::strokeCircle(double centerX, double centerY, double diameter, double lineWidth,
                          const CodableColor& color) {
    cairo_t* context = m_surface->context.get();
    // A line wider than the circle leaves no hole.
    const bool isDisc = lineWidth >= diameter;
    cairo_new_path(context);
    cairo_arc(context, centerX, centerY, (isDisc ? diameter + lineWidth : diameter) / 2, 0, 2 * std::numbers::pi);
    cairo_close_path(context);
    cairo_set_line_width(context, lineWidth);
    cairo_set_source_rgba(context, color.red, color.green, color.blue, color.alpha);
    if (isDisc)
        cairo_fill(context);
    else
        cairo_stroke(context);
}

Image Canvas::image() const {
    cairo_surface_t* surface = m_surface->surface.get();
    cairo_surface_flush(surface);
    const unsigned char* pixels = cairo_image_surface_get_data(surface);
    if (pixels == nullptr) return {};

    // Cairo's 32-bit pixels are B G R A in memory on little-endian machines, as an `Image` has them.
    Image image;
    image.size = m_surface->size;
    const std::size_t rowBytes = static_cast<std::size_t>(image.size.width) * 4;
    image.pixels.resize(rowBytes * static_cast<std::size_t>(image.size.height));
    const int stride = cairo_image_surface_get_stride(surface);
    for (int y = 0; y < image.size.height; ++y)
        std::memcpy(image.pixels.data() + static_cast<std::size_t>(y) * rowBytes,
                    pixels + static_cast<std::ptrdiff_t>(y) * stride, rowBytes);
    return image;
}

} // namespace morvelin
