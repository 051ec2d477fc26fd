#include "timeline/DenseCurve.h"

#include <algorithm>

#include "timeline/ClickPings.h"
#include "timeline/FragmentMap.h"
#include "timeline/PositionTrack.h"
#include "timeline/Tolerance.h"
#include "timeline/ZoomTrack.h"

namespace morvelin {

namespace {

constexpr Seconds kLeastSpacing = 0.1_s;

/// When the edit shows a move of the pointer, in time order.
std::vector<EditTime> moveTimes(std::span<const CursorEvent> events, const FragmentMap& fragments) {
    std::vector<EditTime> times;
    times.reserve(events.size());
    for (const CursorEvent& event : events) {
        if (event.event != CursorEventType::Move) continue;
        if (fragments.isEmpty())
            times.push_back(std::max(uncutEditTime(event.timestamp), EditTime()));
        else if (const auto time = fragments.editTime(event.timestamp))
            times.push_back(std::clamp(*time, EditTime(), EditTime(fragments.duration())));
    }
    if (!std::ranges::is_sorted(times)) std::ranges::sort(times);
    return times;
}

/// The moments at which the curve is sampled.
std::vector<EditTime> sampleTimes(std::span<const CursorEvent> events, const FragmentMap& fragments) {
    const std::vector<EditTime> moves = moveTimes(events, fragments);
    std::vector<EditTime> grid{EditTime()};
    for (const EditTime time : moves)
        if (atLeast(time - grid.back(), kLeastSpacing)) grid.push_back(time);

    EditTime end{fragments.duration()};
    if (fragments.isEmpty()) end = moves.empty() ? EditTime() : moves.back();
    if (end > EditTime() && !atLeast(grid.back(), end)) grid.push_back(end);
    return grid;
}

} // namespace

std::vector<DenseZoomFrame> denseFrames(std::vector<ZoomKeyframe> zooms, std::vector<PositionKeyframe> positions,
                                        std::span<const CursorEvent> events, const FragmentMap& fragments) {
    const ZoomTrack zoom(std::move(zooms));
    const PositionTrack position(std::move(positions));
    std::vector<DenseZoomFrame> frames;
    for (const EditTime t : sampleTimes(events, fragments)) {
        const NormalizedPoint center = position.positionAt(t);
        frames.push_back({t, zoom.zoomAt(t), center.x, center.y});
    }
    return frames;
}

namespace {

/// One value's course over an interval of the curve.
struct Chord {
    double width; ///< seconds
    double slope;
};

/// The slope at the sample between two chords: 0 at a turning point, else their weighted harmonic mean. `near` is the
/// chord that is being drawn.
double slopeBetween(const Chord& near, const Chord& far) {
    if (!(far.width > 0) || !(near.slope * far.slope > 0)) return 0;
    const double farWeight = 2 * near.width + far.width;
    const double nearWeight = near.width + 2 * far.width;
    return (farWeight + nearWeight) / (farWeight / far.slope + nearWeight / near.slope);
}

/// The curve between sample `i` and the next one.
class Interval {
public:
    Interval(std::span<const DenseZoomFrame> frames, std::size_t i, EditTime t)
        : m_frames(frames),
          m_i(i),
          m_u((t - frames[i].time) / (frames[i + 1].time - frames[i].time)) {}

    double read(double DenseZoomFrame::*value) const {
        const Chord here = chord(m_i, value);
        const double left = m_i == 0 ? here.slope : slopeBetween(here, chord(m_i - 1, value));
        const double right = m_i + 2 == m_frames.size() ? here.slope : slopeBetween(here, chord(m_i + 1, value));

        const double u2 = m_u * m_u;
        const double u3 = u2 * m_u;
        return m_frames[m_i].*value * (2 * u3 - 3 * u2 + 1) + here.width * left * (u3 - 2 * u2 + m_u) +
               m_frames[m_i + 1].*value * (3 * u2 - 2 * u3) + here.width * right * (u3 - u2);
    }

private:
    [[nodiscard]] Chord chord(std::size_t i, double DenseZoomFrame::*value) const {
        const double width = (m_frames[i + 1].time - m_frames[i].time).value;
        return {width, width > 0 ? (m_frames[i + 1].*value - m_frames[i].*value) / width : 0};
    }

    std::span<const DenseZoomFrame> m_frames;
    std::size_t m_i;
    double m_u; ///< 0..1
};

} // namespace

DenseZoomFrame sampleDenseFrames(std::span<const DenseZoomFrame> frames, EditTime t) {
    if (frames.empty()) return {t, 1, 0.5, 0.5};
    if (t <= frames.front().time) return frames.front();
    if (t >= frames.back().time) return frames.back();

    const auto after = std::ranges::upper_bound(frames, t, {}, &DenseZoomFrame::time) - frames.begin();
    const Interval interval(frames, static_cast<std::size_t>(after) - 1, t);
    return {t, interval.read(&DenseZoomFrame::zoom), interval.read(&DenseZoomFrame::centerX),
            interval.read(&DenseZoomFrame::centerY)};
}

} // namespace morvelin
