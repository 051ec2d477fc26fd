#include "render/Canvas.h"

#include <cstring>

#include <cairo.h>

namespace morvelin {

namespace {

/// Curves may be off by this many pixels.
double tolerance(Canvas::Curves curves) {
    switch (curves) {
    case Canvas::Curves::Exact: return 0.01;
    case Canvas::Curves::Quick: return 0.1;
    }
    return 0.01;
}

struct DestroySurface {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct DestroyContext {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};
struct DestroyPattern {
    void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
};
using Pattern = std::unique_ptr<cairo_pattern_t, DestroyPattern>;

void setPath(cairo_t* context, const VectorPath& path) {
    cairo_new_path(context);
    for (const auto& [kind, points] : path.segments()) {
        switch (kind) {
        case VectorPath::Kind::Move: cairo_move_to(context, points[0].x, points[0].y); break;
        case VectorPath::Kind::Line: cairo_line_to(context, points[0].x, points[0].y); break;
        case VectorPath::Kind::Curve:
            cairo_curve_to(context, points[0].x, points[0].y, points[1].x, points[1].y, points[2].x, points[2].y);
            break;
        case VectorPath::Kind::Close: cairo_close_path(context); break;
        }
    }
}

void setGradient(cairo_t* context, Pattern pattern, const std::vector<GradientStop>& stops) {
    for (const auto& [at, color] : stops)
        cairo_pattern_add_color_stop_rgba(pattern.get(), at, color.red, color.green, color.blue, color.alpha);
    cairo_set_source(context, pattern.get());
}

void setPaint(cairo_t* context, const CodableColor& color) {
    cairo_set_source_rgba(context, color.red, color.green, color.blue, color.alpha);
}

void setPaint(cairo_t* context, const LinearGradient& gradient) {
    const auto& [from, to, stops] = gradient;
    setGradient(context, Pattern(cairo_pattern_create_linear(from.x, from.y, to.x, to.y)), stops);
}

void setPaint(cairo_t* context, const RadialGradient& gradient) {
    const auto& [center, radius, stops] = gradient;
    setGradient(context, Pattern(cairo_pattern_create_radial(center.x, center.y, 0, center.x, center.y, radius)),
                stops);
}

void setPaint(cairo_t* context, const Paint& paint) {
    std::visit([&](const auto& kind) { setPaint(context, kind); }, paint);
}

} // namespace

struct Canvas::Surface {
    PixelSize size;
    std::unique_ptr<cairo_surface_t, DestroySurface> surface;
    std::unique_ptr<cairo_t, DestroyContext> context;

    Surface(const PixelBox& box, Curves curves)
        : size{box.width, box.height},
          surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, box.width, box.height)),
          context(cairo_create(surface.get())) {
        cairo_set_antialias(context.get(), CAIRO_ANTIALIAS_BEST);
        cairo_set_tolerance(context.get(), tolerance(curves));
        cairo_set_line_join(context.get(), CAIRO_LINE_JOIN_ROUND);
        cairo_set_line_cap(context.get(), CAIRO_LINE_CAP_ROUND);
        cairo_translate(context.get(), -box.x, -box.y);
    }
};

Canvas::Canvas(const PixelBox& box, Curves curves) : m_surface(std::make_unique<Surface>(box, curves)) {}
Canvas::Canvas(Canvas&&) noexcept = default;
Canvas& Canvas::operator=(Canvas&&) noexcept = default;
Canvas::~Canvas() = default;

void Canvas::fill(const VectorPath& path, const Paint& paint) {
    cairo_t* context = m_surface->context.get();
    setPath(context, path);
    setPaint(context, paint);
    cairo_fill(context);
}

void Canvas::stroke(const VectorPath& path, double lineWidth, const Paint& paint) {
    cairo_t* context = m_surface->context.get();
    setPath(context, path);
    setPaint(context, paint);
    cairo_set_line_width(context, lineWidth);
    cairo_stroke(context);
}

void Canvas::strokeCircle(double centerX, double centerY, double diameter, double lineWidth,
                          const CodableColor& color) {
    // A line wider than the circle leaves no hole.
    if (lineWidth >= diameter)
        fill(VectorPath::circle({centerX, centerY}, (diameter + lineWidth) / 2), color);
    else
        stroke(VectorPath::circle({centerX, centerY}, diameter / 2), lineWidth, color);
}

void Canvas::enter(const DrawingPlacement& placement) {
    cairo_t* context = m_surface->context.get();
    cairo_save(context);
    cairo_translate(context, placement.origin.x, placement.origin.y);
    cairo_rotate(context, placement.angle);
    cairo_scale(context, placement.scale, placement.scale);
}

void Canvas::enter(const VectorPath& clip) {
    cairo_t* context = m_surface->context.get();
    cairo_save(context);
    setPath(context, clip);
    cairo_clip(context);
    cairo_new_path(context);
}

void Canvas::leave() { cairo_restore(m_surface->context.get()); }

cairo_t* Canvas::context() const { return m_surface->context.get(); }

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
