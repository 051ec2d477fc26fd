#include "render/MeshShapes.h"

#include <algorithm>
#include <cmath>

namespace morvelin {

namespace {

/// The light at a pane's edge.
constexpr double kRimAlpha = 0.42;
constexpr double kRimWhite = 0.65; ///< the rest is the pane's own tint
/// How far it reaches in, as a share of the output's smaller side.
constexpr double kRimReach = 0.010;

struct Fill {
    Rgb top;
    Rgb bottom;
    double topAlpha;
    double bottomAlpha;
};

/// Places figures by shares of an output.
class Placement {
public:
    explicit Placement(PixelSize size)
        : m_width(size.width),
          m_height(size.height),
          m_side(std::min(size.width, size.height)) {}

    [[nodiscard]] ArtShape circle(double x, double y, double radius, const Fill& fill) const {
        return at(x, y, radius * m_side, radius * m_side, ArtShape::Kind::Circle, fill);
    }
    [[nodiscard]] ArtShape diamond(double x, double y, double halfDiagonal, const Fill& fill) const {
        return at(x, y, halfDiagonal * m_side, halfDiagonal * m_side, ArtShape::Kind::Diamond, fill);
    }
    [[nodiscard]] ArtShape bar(double x, double y, double width, double height, double angle, const Fill& fill) const {
        ArtShape shape = at(x, y, width * m_width / 2, height * m_height / 2, ArtShape::Kind::Bar, fill);
        shape.cornerRadius = 0.14 * 2 * std::min(shape.halfWidth, shape.halfHeight);
        shape.angle = angle;
        return shape;
    }

private:
    [[nodiscard]] ArtShape at(double x, double y, double halfWidth, double halfHeight, ArtShape::Kind kind,
                              const Fill& fill) const {
        ArtShape shape;
        shape.kind = kind;
        shape.centerX = x * m_width;
        shape.centerY = y * m_height;
        shape.halfWidth = halfWidth;
        shape.halfHeight = halfHeight;
        shape.top = fill.top;
        shape.bottom = fill.bottom;
        shape.topAlpha = fill.topAlpha;
        shape.bottomAlpha = fill.bottomAlpha;
        shape.rimWidth = std::max(1.0, kRimReach * m_side);
        return shape;
    }

    double m_width;
    double m_height;
    double m_side; ///< the smaller of both
};

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

ArtShape::Veil ArtShape::veilAt(double x, double y) const {
    const LocalPoint place = localPoint(*this, x, y);
    const double down = std::clamp(0.5 + place.y / (2 * std::max(halfHeight, 1.0)), 0.0, 1.0);
    const double alpha = std::lerp(topAlpha, bottomAlpha, down);
    // Light over the tint, most at the top, where it comes from.
    const double rim = kRimAlpha * (1 - 0.75 * down) * std::exp(std::min(signedDistance(*this, place), 0.0) / rimWidth);
    const double both = rim + alpha * (1 - rim);
    const double caught = both > 0 ? rim / both : 0;
    const auto part = [&](double Rgb::*channel) {
        return std::lerp(std::lerp(top.*channel, bottom.*channel, down), std::lerp(top.*channel, 1.0, kRimWhite),
                         caught);
    };
    return {{part(&Rgb::red), part(&Rgb::green), part(&Rgb::blue)}, both};
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
    const Placement place(output);
    const auto color = [&](std::size_t index) { return rgbFromHex(preset.hexColors[index]); };
    if (preset.id == "mesh-nebula") {
        return {place.circle(0.78, 0.18, 0.38, {color(2), color(1), 0.95, 0.15}),
                place.circle(0.18, 0.82, 0.42, {color(3), color(1), 0.90, 0.10}),
                place.circle(0.47, 0.46, 0.28, {color(4), color(2), 0.90, 0.20})};
    }
    if (preset.id == "mesh-glacier") {
        return {place.bar(0.32, 0.38, 0.55, 0.22, -0.22, {color(2), color(2), 0.72, 0.22}),
                place.bar(0.72, 0.68, 0.48, 0.18, 0.18, {color(3), color(1), 0.62, 0.20})};
    }
    if (preset.id == "mesh-terra") {
        return {place.diamond(0.22, 0.28, 0.22, {color(2), color(4), 0.85, 0.20}),
                place.diamond(0.80, 0.74, 0.52, {color(3), color(1), 0.80, 0.20}),
                place.diamond(0.56, 0.86, 0.34, {color(1), color(3), 0.60, 0.45}),
                place.diamond(0.33, 0.66, 0.24, {color(4), color(1), 0.75, 0.25}),
                place.diamond(0.63, 0.24, 0.13, {color(2), color(0), 0.70, 0.25})};
    }
    return {};
}

} // namespace morvelin
