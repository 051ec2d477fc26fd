// The zoom track, prepared for being read at any time.
#pragma once

#include <vector>

#include "core/Keyframes.h"

namespace morvelin {

/// Sorts ramps by start; those that start together (within 1e-9 s) by length.
void sortRamps(std::vector<ZoomKeyframe>& zooms);

/// The camera's magnification over time. A value, made once per pass; a look-up takes O(log n).
///
/// Ramps of a hand-edited track may overlap. The earliest one that still runs then sets the zoom, so that the picture
/// never jumps when a later one begins.
class ZoomTrack {
public:
    explicit ZoomTrack(std::vector<ZoomKeyframe> zooms);

    /// Sorted by `startTime`.
    [[nodiscard]] const std::vector<ZoomKeyframe>& keys() const { return m_keys; }

    /// 1 before the first ramp, and without any.
    [[nodiscard]] double zoomAt(EditTime t) const;

    /// The greatest zoom between two moments, in either order: their own zooms and those where a ramp between them
    /// starts or ends. Time grows with the number of such ramps alone.
    [[nodiscard]] double maxZoomInWindow(EditTime a, EditTime b) const;

private:
    struct Corner {
        EditTime time;
        double zoom;
    };

    std::vector<ZoomKeyframe> m_keys;
    std::vector<EditTime> m_starts;
    std::vector<EditTime> m_runningEnds; ///< the greatest end of all ramps up to this one
    std::vector<Corner> m_corners;       ///< all starts and ends in time order
};

} // namespace morvelin
