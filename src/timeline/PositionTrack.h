// The position track, prepared for being read at any time.
#pragma once

#include <vector>

#include "core/Keyframes.h"

namespace morvelin {

/// Where the camera looks over time. A value, made once per pass; a look-up takes O(log n).
///
/// Between keys the view moves by a smoothstep, whatever the zoom's own easing; before the first and after the last key
/// it stands. Without keys it is the middle.
class PositionTrack {
public:
    explicit PositionTrack(std::vector<PositionKeyframe> positions);

    /// Sorted by `time`.
    [[nodiscard]] const std::vector<PositionKeyframe>& keys() const { return m_keys; }
    /// Of `keys()`.
    [[nodiscard]] const std::vector<EditTime>& times() const { return m_times; }

    /// The view's centre.
    [[nodiscard]] NormalizedPoint positionAt(EditTime t) const;
    /// The point that was asked for, before any clamping.
    [[nodiscard]] NormalizedPoint targetAt(EditTime t) const;

private:
    template <class PointOf>
    [[nodiscard]] NormalizedPoint read(EditTime t, PointOf pointOf) const;

    std::vector<PositionKeyframe> m_keys;
    std::vector<EditTime> m_times;
};

} // namespace morvelin
