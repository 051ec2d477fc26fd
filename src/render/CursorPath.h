// The pointer's way through a take: smooth to the eye, close to the hand in drags, exact at every click. Owned by a
// cursor scene.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "core/CursorEvent.h"
#include "core/Geometry.h"
#include "core/base/Time.h"
#include "render/CursorHolds.h"

namespace morvelin {

/// Positions of the pointer in capture space, for any moment of the recording. Immutable once made.
class CursorPath {
public:
    /// `smoothing` is 0 (the samples as recorded) to 1; `events` may be in any order.
    [[nodiscard]] static CursorPath make(std::span<const CursorEvent> events, double smoothing,
                                         CaptureSize captureSize);

    /// Where the pointer is; before the first sample the first place, after the last the last. Nothing without samples.
    [[nodiscard]] std::optional<NormalizedPoint> position(SourceTime t) const;

private:
    std::vector<SourceTime> m_times; ///< of each place where the path is linear; otherwise the grid tells the times
    std::vector<double> m_xs;
    std::vector<double> m_ys;
    SourceTime m_startTime;
    bool m_isLinear = true;
};

} // namespace morvelin
