// What the gesture detectors share: the pointer's samples, what breaks a gesture off, and the zone it marks.
#pragma once

#include <cmath>
#include <limits>
#include <span>
#include <vector>

#include "core/CursorEvent.h"
#include "core/Geometry.h"

namespace morvelin {

struct PointerSample {
    SourceTime t;
    double x = 0;
    double y = 0;
};

/// Plain, for fractions of a capture: the library's overflow-proof form takes most of a walk's time.
inline double lengthOf(double dx, double dy) { return std::sqrt(dx * dx + dy * dy); }

/// A pointer track as detectors read it, each list in time order.
struct PointerTrack {
    std::vector<PointerSample> moves;
    std::vector<SourceTime> presses;

    [[nodiscard]] static PointerTrack of(std::span<const CursorEvent> events);
};

/// Feeds a track to a detector's walk, presses before the moves of their time, and collects what it detects.
template <class Walk>
auto detectAlong(const PointerTrack& track, Walk walk) {
    std::vector<typename Walk::Detection> detections;
    auto press = track.presses.begin();
    for (const PointerSample& sample : track.moves) {
        for (; press != track.presses.end() && *press <= sample.t; ++press) walk.press(*press);
        if (auto detection = walk.move(sample)) detections.push_back(*detection);
    }
    return detections;
}

/// The smallest box around the points given to it.
struct GestureBox {
    double minX = 0;
    double minY = 0;
    double maxX = 0;
    double maxY = 0;

    GestureBox() = default;
    explicit GestureBox(const PointerSample& point) : minX(point.x), minY(point.y), maxX(point.x), maxY(point.y) {}

    void extend(const PointerSample& point);
    void extend(const GestureBox& other);

    [[nodiscard]] double width() const { return maxX - minX; }
    [[nodiscard]] double height() const { return maxY - minY; }
    [[nodiscard]] NormalizedPoint center() const { return {(minX + maxX) / 2, (minY + maxY) / 2}; }
};

/// How far a zone reaches beyond its gesture's box on each side.
struct ZonePadding {
    double fraction; ///< of the box
    double min;
};

/// The rectangle that a gesture marks: its box with a margin, moved in where it would pass the capture's edge.
[[nodiscard]] NormalizedRect gestureZone(const GestureBox& box, ZonePadding padding);

/// The time of a gesture under way, and what breaks it off: stillness, too long a time, or a press within it.
class GestureClock {
public:
    struct Limits {
        Seconds maxGestureDuration;
        Seconds pauseResetDuration;
        double stationaryEpsilon; ///< movement below this is stillness
    };

    explicit GestureClock(Limits limits) : m_limits(limits) {}

    void restart(const PointerSample& sample);
    /// Moves the gesture's start forward, to a moment already passed.
    void startAt(SourceTime t) { m_start = t; }
    void press(SourceTime t) { m_lastPress = std::max(m_lastPress, t); }
    /// Takes the next sample; true when the gesture under way can't go on with it.
    [[nodiscard]] bool breaksOff(const PointerSample& sample);

    [[nodiscard]] SourceTime start() const { return m_start; }
    /// The sample that was taken last.
    [[nodiscard]] const PointerSample& latest() const { return m_latest; }

private:
    Limits m_limits;
    SourceTime m_start;
    SourceTime m_lastMoved;
    SourceTime m_lastPress{-std::numeric_limits<double>::infinity()};
    PointerSample m_latest;
};

} // namespace morvelin
