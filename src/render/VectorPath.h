// Outlines as values: made of straight lines and cubic curves, they are moved, turned and bent before a canvas draws
// them. Pure.
#pragma once

#include <array>
#include <cmath>
#include <span>
#include <vector>

#include "render/StageGeometry.h"

namespace morvelin {

/// A place in a drawing, or the way from one to another; y downward.
struct PathPoint {
    double x = 0;
    double y = 0;

    friend PathPoint operator+(PathPoint a, PathPoint b) { return {a.x + b.x, a.y + b.y}; }
    friend PathPoint operator-(PathPoint a, PathPoint b) { return {a.x - b.x, a.y - b.y}; }
    friend PathPoint operator*(PathPoint a, double factor) { return {a.x * factor, a.y * factor}; }
    [[nodiscard]] double length() const { return std::hypot(x, y); }
};

/// A corner that is cut by a curve which begins `cut` before it and ends as far after it.
struct RoundCorner {
    PathPoint place;
    double cut = 0;
};

class VectorPath {
public:
    enum class Kind { Move, Line, Curve, Close };
    enum class Ends { Open, Joined };

    /// `points` are as many as the kind needs: one, one, three, none.
    struct Segment {
        Kind kind;
        std::array<PathPoint, 3> points;
    };

    VectorPath& moveTo(PathPoint to);
    VectorPath& lineTo(PathPoint to);
    VectorPath& curveTo(PathPoint pull1, PathPoint pull2, PathPoint to);
    /// A curve that one point pulls to its side.
    VectorPath& curveTo(PathPoint pull, PathPoint to);
    VectorPath& close();
    /// A path beside what is there.
    VectorPath& add(const VectorPath& other);
    /// A path that goes on from where this one ends.
    VectorPath& join(const VectorPath& other);

    [[nodiscard]] static VectorPath circle(PathPoint center, double radius);
    [[nodiscard]] static VectorPath roundedRectangle(const Rectangle& rect, double radius);
    [[nodiscard]] static VectorPath polygon(std::span<const PathPoint> corners);
    /// A polygon with round corners; a cut ends at half a side.
    [[nodiscard]] static VectorPath rounded(std::span<const RoundCorner> corners);
    /// A smooth line through all points.
    [[nodiscard]] static VectorPath through(std::span<const PathPoint> points, Ends ends);
    /// A closed line through the midpoints of neighbouring points, each point pulling it to its side; nothing for fewer
    /// than 3.
    [[nodiscard]] static VectorPath aroundMidpoints(std::span<const PathPoint> points);

    /// Every point moved by `map`.
    template <class Map>
    [[nodiscard]] VectorPath mapped(const Map& map) const {
        VectorPath path = *this;
        for (Segment& segment : path.m_segments)
            for (PathPoint& point : segment.points) point = map(point);
        return path;
    }

    [[nodiscard]] std::span<const Segment> segments() const { return m_segments; }

private:
    [[nodiscard]] PathPoint place() const;

    std::vector<Segment> m_segments;
};

} // namespace morvelin
