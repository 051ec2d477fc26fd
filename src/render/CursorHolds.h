// Where the pointer's track must not be smoothed away: drags, and the places of clicks. Used by `CursorPath`.
#pragma once

#include <span>
#include <vector>

#include "core/CursorEvent.h"
#include "core/base/Time.h"

namespace morvelin {

/// The captured area in points, the unit in which a hand's tremble is told from a movement.
struct CaptureSize {
    double width = 1;
    double height = 1;
};

/// A span of the pointer's track, and the place that it is held at or starts from (capture space).
struct CursorHold {
    SourceTime start;
    SourceTime end;
    double x = 0;
    double y = 0;

    bool operator==(const CursorHold&) const = default;
};

/// The spans from a press to the release of its button in which the pointer went at least 4 points away, by start.
/// `events` are in time order.
[[nodiscard]] std::vector<CursorHold> cursorDrags(std::span<const CursorEvent> events, CaptureSize captureSize);

/// The places of presses and releases, in time order; neighbours at one place are one pin with a start and an end,
/// unless the pointer went more than 4 points away between them.
[[nodiscard]] std::vector<CursorHold> cursorPins(std::span<const CursorEvent> events, CaptureSize captureSize);

} // namespace morvelin
