// Turns the clicks of a take into the zoom and position tracks that steer the camera.
#pragma once

#include <optional>
#include <vector>

#include "core/CursorEvent.h"
#include "core/Keyframes.h"
#include "core/Style.h"

namespace morvelin {

struct ZoomEngineConfig {
    double defaultZoomIn = 1.75;
    double defaultZoomOut = 1.0;
};

/// What a generation makes: both tracks whole, sorted by time.
struct ZoomTracks {
    std::vector<ZoomKeyframe> zoom;
    std::vector<PositionKeyframe> position;

    bool operator==(const ZoomTracks&) const = default;
};

/// Pure: holds no state between generations.
class ZoomEngine {
public:
    /// How the camera comes to a group of clicks.
    struct RampPlan {
        EditTime zoomStart;
        Seconds transition; ///< not above 0 where there is no room for a ramp
    };

    /// Clicks in any order. A `duration` that is absent or not above 0 is unknown: nothing is then made after the last
    /// click. Without clicks both tracks hold their base key alone. O(n log n).
    [[nodiscard]] ZoomTracks generateKeyframes(std::vector<ClickPing> clicks, const EditingSettings& settings,
                                               std::optional<Seconds> duration, IdSource& ids) const;

    ZoomEngineConfig config;
};

} // namespace morvelin
