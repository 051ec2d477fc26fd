#include "render/MeshShapes.h"

#include <algorithm>
#include <cmath>

namespace morvelin {

namespace {

/// Lengths of the output that figures are placed by.
struct Canvas {
    double width;
    double height;
    double side; ///< the smaller of both

    explicit Canvas(PixelSize size) : width(size.width), height(size.height), side(std::min(size.width, size.height)) {}
};

struct Fill {
    Rgb top;
    Rgb bottom;
    double topAlpha;
    double bottomAlpha;
};

ArtShape filled(ArtShape shape, const Fill& fill) {
    shape.top = fill.top;
    shape.bottom = fill.bottom;
    shape.topAlpha = fill.topAlpha;
    shape.bottomAlpha = fill.bottomAlpha;
    return shape;
}

ArtShape circle(const Canvas& canvas, double x, double y, double radius, const Fill& fill) {
    return filled({ArtShape::Kind::Circle,
                   x * canvas.width,
                   y * canvas.height,
                   radius * canvas.side,
                   radius * canvas.side,
                   0,
                   0,
                   {},
                   {},
                   1,
                   1},
                  fill);
}

ArtShape bar(const Canvas& canvas, double x, double y, double width, double height, double angle, const Fill& fill) {
    const double w = width * canvas.width;
    const double h = height * canvas.height;
    return filled({ArtShape::Kind::Bar,
                   x * canvas.width,
                   y * canvas.height,
                   w / 2,
                   h / 2,
                   0.14 * std::min(w, h),
                   angle,
                   {},
                   {},
                   1,
                   1},
                  fill);
}

ArtShape diamond(const Canvas& canvas, double x, double y, double halfDiagonal, const Fill& fill) {
    return filled({ArtShape::Kind::Diamond,
                   x * canvas.width,
                   y * canvas.height,
                   halfDiagonal * canvas.side,
                   halfDiagonal * canvas.side,
                   0,
                   0,
                   {},
                   {},
                   1,
                   1},
                  fill);
}

/// A point seen from a figure's middle, along its own axes.
struct LocalPoint {
    double x;
    double y;
};

LocalPoint localPoint(const ArtShape& shape, double x, double y) {
    const double dx = x - shape.centerX;
    const double dy = y - shape.centerY;
    const double c = std::cos(shape.angle);
    const double s = std::sin(shape.angle);
    return {c * dx + s * dy, -s * dx + c * dy};
}

/// Distance to a figure's edge, below 0 inside.
double signedDistance(const ArtShape& shape, const LocalPoint& p) {
    switch (shape.kind) {
    case ArtShape::Kind::Circle: return std::hypot(p.x, p.y) - shape.halfWidth;
    case ArtShape::Kind::Bar: {
        const double x = std::abs(p.x) - (shape.halfWidth - shape.cornerRadius);
        const double y = std::abs(p.y) - (shape.halfHeight - shape.cornerRadius);
        return std::hypot(std::max(x, 0.0), std::max(y, 0.0)) + std::min(std::max(x, y), 0.0) - shape.cornerRadius;
    }
    case ArtShape::Kind::Diamond: return (std::abs(p.x) + std::abs(p.y) - shape.halfWidth) / std::sqrt(2.0);
    }
    return 0;
}

} // namespace

/// A pixel away from the edge is in or out; one on it is the mean of small cells, so that tips are as true as sides.
double ArtShape::coverage(double x, double y) const {
    const double distance = signedDistance(*this, localPoint(*this, x, y));
    if (std::abs(distance) >= 1) return distance < 0 ? 1 : 0;

    constexpr int kCells = 4;
    constexpr double kCell = 1.0 / kCells;
    double sum = 0;
    for (int row = 0; row < kCells; ++row) {
        for (int column = 0; column < kCells; ++column) {
            const LocalPoint place = localPoint(*this, x + (column + 0.5) * kCell - 0.5, y + (row + 0.5) * kCell - 0.5);
            sum += std::clamp(0.5 - signedDistance(*this, place) / kCell, 0.0, 1.0);
        }
    }
    return sum / (kCells * kCells);
}

double ArtShape::fillPosition(double x, double y) const {
    return std::clamp(0.5 + localPoint(*this, x, y).y / (2 * std::max(halfHeight, 1.0)), 0.0, 1.0);
}

PixelBox ArtShape::bounds() const {
    const double c = std::abs(std::cos(angle));
    const double s = std::abs(std::sin(angle));
    const double reachX = c * halfWidth + s * halfHeight + 2;
    const double reachY = s * halfWidth + c * halfHeight + 2;
    const int x = static_cast<int>(std::floor(centerX - reachX));
    const int y = static_cast<int>(std::floor(centerY - reachY));
    return {x, y, static_cast<int>(std::ceil(centerX + reachX)) - x, static_cast<int>(std::ceil(centerY + reachY)) - y};
}

std::vector<ArtShape> meshShapes(const BackgroundPresets::GradientPreset& preset, PixelSize output) {
    const Canvas canvas(output);
    const auto color = [&](std::size_t index) { return rgbFromHex(preset.hexColors[index]); };
    if (preset.id == "mesh-nebula") {
        return {circle(canvas, 0.78, 0.18, 0.38, {color(2), color(1), 0.95, 0.15}),
                circle(canvas, 0.18, 0.82, 0.42, {color(3), color(1), 0.90, 0.10}),
                circle(canvas, 0.47, 0.46, 0.28, {color(4), color(2), 0.90, 0.20})};
    }
    if (preset.id == "mesh-glacier") {
        return {bar(canvas, 0.32, 0.38, 0.55, 0.22, -0.22, {color(2), color(2), 0.80, 0.12}),
                bar(canvas, 0.72, 0.68, 0.48, 0.18, 0.18, {color(3), color(1), 0.60, 0.08})};
    }
    if (preset.id == "mesh-terra") {
        return {diamond(canvas, 0.22, 0.28, 0.22, {color(2), color(4), 0.90, 0.15}),
                diamond(canvas, 0.74, 0.66, 0.34, {color(3), color(1), 0.85, 0.10}),
                diamond(canvas, 0.55, 0.24, 0.13, {color(4), color(1), 0.80, 0.20})};
    }
    return {};
}

} // namespace morvelin
