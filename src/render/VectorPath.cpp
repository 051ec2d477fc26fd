#include "render/VectorPath.h"

#include <algorithm>
#include <numbers>

namespace morvelin {

namespace {

/// How far the pulls of an arc's curve lie along its tangents, in radii.
double pullOf(double angle) { return 4.0 / 3 * std::tan(angle / 4); }

/// The way a smooth line takes through `at`: short steps count more, so that uneven points make no bulge.
PathPoint tangent(PathPoint before, PathPoint at, PathPoint after) {
    const double whole = (at - before).length() + (after - at).length();
    return whole > 0 ? (after - before) * (1 / whole) : PathPoint{};
}

} // namespace

PathPoint VectorPath::place() const {
    for (auto segment = m_segments.rbegin(); segment != m_segments.rend(); ++segment) {
        switch (segment->kind) {
        case Kind::Move:
        case Kind::Line: return segment->points[0];
        case Kind::Curve: return segment->points[2];
        case Kind::Close: break;
        }
    }
    return {};
}

VectorPath& VectorPath::moveTo(PathPoint to) {
    m_segments.push_back({Kind::Move, {to}});
    return *this;
}

VectorPath& VectorPath::lineTo(PathPoint to) {
    m_segments.push_back({Kind::Line, {to}});
    return *this;
}

VectorPath& VectorPath::curveTo(PathPoint pull1, PathPoint pull2, PathPoint to) {
    m_segments.push_back({Kind::Curve, {pull1, pull2, to}});
    return *this;
}

VectorPath& VectorPath::curveTo(PathPoint pull, PathPoint to) {
    // A quadratic curve as a cubic one: its control point counts two thirds at each end.
    const PathPoint from = place();
    return curveTo(from + (pull - from) * (2.0 / 3), to + (pull - to) * (2.0 / 3), to);
}

VectorPath& VectorPath::close() {
    m_segments.push_back({Kind::Close, {}});
    return *this;
}

VectorPath& VectorPath::add(const VectorPath& other) {
    m_segments.insert(m_segments.end(), other.m_segments.begin(), other.m_segments.end());
    return *this;
}

VectorPath& VectorPath::join(const VectorPath& other) {
    const std::size_t start = m_segments.size();
    add(other);
    if (start > 0 && start < m_segments.size()) m_segments[start].kind = Kind::Line;
    return *this;
}

VectorPath VectorPath::circle(PathPoint center, double radius) {
    // Eight curves are within a hundred-thousandth of the radius; four show on a large thin ring.
    constexpr int kArcs = 8;
    constexpr double kAngle = 2 * std::numbers::pi / kArcs;
    const double pull = radius * pullOf(kAngle);
    const auto outward = [](int i) { return PathPoint{std::cos(i * kAngle), std::sin(i * kAngle)}; };
    const auto onward = [&](int i) { return PathPoint{-outward(i).y, outward(i).x}; };
    VectorPath path;
    path.moveTo(center + outward(0) * radius);
    for (int i = 1; i <= kArcs; ++i)
        path.curveTo(center + outward(i - 1) * radius + onward(i - 1) * pull,
                     center + outward(i) * radius - onward(i) * pull, center + outward(i) * radius);
    return path.close();
}

VectorPath VectorPath::roundedRectangle(const Rectangle& rect, double radius) {
    const double r = std::clamp(radius, 0.0, std::max(0.0, rect.smallerSide()) / 2);
    const double k = r * (1 - pullOf(std::numbers::pi / 2));
    const double left = rect.x;
    const double top = rect.y;
    const double right = rect.right();
    const double bottom = rect.bottom();
    VectorPath path;
    path.moveTo({left + r, top}).lineTo({right - r, top});
    path.curveTo({right - k, top}, {right, top + k}, {right, top + r}).lineTo({right, bottom - r});
    path.curveTo({right, bottom - k}, {right - k, bottom}, {right - r, bottom}).lineTo({left + r, bottom});
    path.curveTo({left + k, bottom}, {left, bottom - k}, {left, bottom - r}).lineTo({left, top + r});
    path.curveTo({left, top + k}, {left + k, top}, {left + r, top}).close();
    return path;
}

VectorPath VectorPath::polygon(std::span<const PathPoint> corners) {
    VectorPath path;
    if (corners.empty()) return path;
    path.moveTo(corners.front());
    for (const PathPoint& corner : corners.subspan(1)) path.lineTo(corner);
    return path.close();
}

VectorPath VectorPath::rounded(std::span<const RoundCorner> corners) {
    VectorPath path;
    const std::size_t count = corners.size();
    if (count < 3) return path;
    const auto towards = [](const RoundCorner& corner, PathPoint other) {
        const PathPoint side = other - corner.place;
        return corner.place + side * std::min(corner.cut / std::max(side.length(), 1e-9), 0.5);
    };
    for (std::size_t i = 0; i < count; ++i) {
        const RoundCorner& corner = corners[i];
        const PathPoint start = towards(corner, corners[(i + count - 1) % count].place);
        if (i == 0)
            path.moveTo(start);
        else
            path.lineTo(start);
        path.curveTo(corner.place, towards(corner, corners[(i + 1) % count].place));
    }
    return path.close();
}

VectorPath VectorPath::through(std::span<const PathPoint> points, Ends ends) {
    VectorPath path;
    if (points.size() < 2) return path;
    const std::size_t count = points.size();
    const bool isJoined = ends == Ends::Joined;
    const auto at = [&](std::size_t i) { return points[i % count]; };
    const auto tangentAt = [&](std::size_t i) {
        if (isJoined) return tangent(at(i + count - 1), at(i), at(i + 1));
        return tangent(points[i == 0 ? 0 : i - 1], points[i], points[std::min(i + 1, count - 1)]);
    };
    path.moveTo(points.front());
    for (std::size_t i = 0; i + (isJoined ? 0 : 1) < count; ++i) {
        const std::size_t next = (i + 1) % count;
        const double third = (at(next) - at(i)).length() / 3;
        path.curveTo(at(i) + tangentAt(i) * third, at(next) - tangentAt(next) * third, at(next));
    }
    return isJoined ? path.close() : path;
}

VectorPath VectorPath::aroundMidpoints(std::span<const PathPoint> points) {
    VectorPath path;
    if (points.size() < 3) return path;
    const auto midpoint = [&](std::size_t i) { return (points[i] + points[(i + 1) % points.size()]) * 0.5; };
    path.moveTo(midpoint(0));
    for (std::size_t i = 1; i < points.size(); ++i) path.curveTo(points[i], midpoint(i));
    return path.close();
}

} // namespace morvelin
