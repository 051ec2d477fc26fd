#include "render/HandDrawing.h"

#include <algorithm>
#include <numbers>

namespace morvelin {

namespace {

double cross(PathPoint a, PathPoint b) { return a.x * b.y - a.y * b.x; }

/// Above 0 for an outline that goes clockwise.
double signedArea(std::span<const PathPoint> points) {
    double area = 0;
    for (std::size_t i = 0; i < points.size(); ++i) area += cross(points[i], points[(i + 1) % points.size()]) / 2;
    return area;
}

/// What lies between an outline that goes clockwise through points and the same outline moved into it, where that lies inside.
VectorPath shadedArea(std::span<const PathPoint> points, const VectorPath& outline, const Tones& tones) {
    const std::size_t count = points.size();
    const auto shift = [&](PathPoint point) {
        const double way = (point.y - tones.fadeStart) / (tones.fadeEnd - tones.fadeStart);
        return tones.shift * (1 - std::clamp(way, 0.0, 1.0));
    };
    // How squarely a point turns away from the light, 0..1.
    const auto depth = [&](std::size_t i) {
        const PathPoint along = points[(i + 1) % count] - points[(i + count - 1) % count];
        const double whole = along.length() * tones.shift.length();
        return whole > 0 ? std::max(0.0, cross(along, tones.shift) / whole) : 0;
    };
    const auto isShaded = [&](std::size_t i) { return depth(i) > 0; };
    const auto moved = [&](PathPoint point, std::size_t i) { return point + shift(point) * depth(i); };
    // The outline's curve from point `i` to the next follows its first segment.
    const auto curve = [&](std::size_t i) -> const auto& { return outline.segments()[i % count + 1].points; };

    VectorPath area;
    for (std::size_t first = 0; first < count; ++first) {
        if (isShaded(first) || !isShaded(first + 1)) continue;
        std::size_t last = first + 1;
        while (isShaded(last)) ++last;
        area.moveTo(points[first]);
        for (std::size_t i = first; i < last; ++i) area.curveTo(curve(i)[0], curve(i)[1], curve(i)[2]);
        for (std::size_t i = last; i-- > first;)
            area.curveTo(moved(curve(i)[1], i + 1), moved(curve(i)[0], i), moved(points[i % count], i));
        area.close();
    }
    return area;
}

/// The way that a smooth line takes through `at`, of length 1.
PathPoint smoothDirection(PathPoint before, PathPoint at, PathPoint after) {
    const PathPoint in = at - before;
    const PathPoint out = after - at;
    const PathPoint along = in * (1 / std::max(in.length(), 1e-9)) + out * (1 / std::max(out.length(), 1e-9));
    return along * (1 / std::max(along.length(), 1e-9));
}

/// An outline that goes clockwise, grown by `width`.
std::vector<PathPoint> grown(std::span<const PathPoint> points, double width) {
    const std::size_t count = points.size();
    std::vector<PathPoint> outer;
    for (std::size_t i = 0; i < count; ++i) {
        const PathPoint along = smoothDirection(points[(i + count - 1) % count], points[i], points[(i + 1) % count]);
        outer.push_back(points[i] + PathPoint{along.y, -along.x} * width);
    }
    return outer;
}

} // namespace

HandPart part(std::span<const PathPoint> corners, double inkWidth, const Tones& tones) {
    // All go the same way around, so that where two lie over each other is inside of both.
    std::vector<PathPoint> points(corners.begin(), corners.end());
    if (signedArea(points) < 0) std::ranges::reverse(points);
    VectorPath outline = VectorPath::through(points, VectorPath::Ends::Joined);
    VectorPath shaded = shadedArea(points, outline, tones);
    return {VectorPath::through(grown(points, inkWidth), VectorPath::Ends::Joined), std::move(outline),
            std::move(shaded), tones.light, tones.shade};
}

HandPart bent(const HandPart& straight, const FingerBend& bend) {
    return {straight.inked.mapped(bend), straight.outline.mapped(bend), straight.shaded.mapped(bend), straight.light,
            straight.shade};
}

VectorPath together(std::span<const HandPart> parts) {
    VectorPath all;
    for (const HandPart& each : parts) all.add(each.outline);
    return all;
}

void drawParts(std::span<const HandPart> parts, const Paint& ink, Canvas& canvas) {
    for (const HandPart& each : parts) canvas.fill(each.inked, ink);
    for (const HandPart& each : parts) {
        canvas.fill(each.outline, each.light);
        canvas.fill(each.shaded, each.shade);
    }
}

VectorPath inkLine(std::span<const PathPoint> points, double width) {
    std::vector<PathPoint> there;
    std::vector<PathPoint> back;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const PathPoint way = points[std::min(i + 1, points.size() - 1)] - points[i == 0 ? 0 : i - 1];
        const double p = static_cast<double>(i) / static_cast<double>(points.size() - 1);
        const double half = width / 2 * std::sin(std::numbers::pi * p);
        const PathPoint side = PathPoint{-way.y, way.x} * (half / std::max(way.length(), 1e-9));
        there.push_back(points[i] + side);
        if (i > 0 && i + 1 < points.size()) back.push_back(points[i] - side);
    }
    there.insert(there.end(), back.rbegin(), back.rend());
    return VectorPath::through(there, VectorPath::Ends::Joined);
}

} // namespace morvelin
