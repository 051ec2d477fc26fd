// Finds where the pointer wagged left and right: "read this".
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "core/CursorEvent.h"
#include "core/Keyframes.h"
#include "timeline/PointerGesture.h"

namespace morvelin {

class TapTapDetector {
public:
    /// Distances are fractions of the capture.
    struct Config {
        int requiredSwings = 4;
        Seconds maxGestureDuration = 1.6_s;
        double minSwingWidth = 0.02; ///< a run in one direction counts from this length
        double maxGestureWidth = 0.45;
        double maxVerticalDriftAbsolute = 0.08;
        double maxVerticalDriftRatio = 0.5; ///< of the gesture's width
        double jitterEpsilon = 0.0015;      ///< a horizontal step below this has no direction
        Seconds pauseResetDuration = 0.15_s;
        double stationaryEpsilon = 0.0006;
        double zonePaddingFraction = 0.15;
        double zonePaddingMin = 0.008;
        Seconds minRepeatInterval = 2_s;
        double sameZoneDistance = 0.08; ///< two detections nearer than this are on one spot
    };

    struct Detection {
        NormalizedRect rect;
        SourceTime startTime;
        NormalizedPoint center;
    };

    /// The gestures in time order; the events may come in any order.
    [[nodiscard]] std::vector<Detection> detect(std::span<const CursorEvent> events) const;
    [[nodiscard]] std::vector<Detection> detect(const PointerTrack& track) const;

    Config config;
};

/// The hand that a detection asks for. A take's first timeline agrees with the source clock; its end is limited to a
/// `duration` above 0.
[[nodiscard]] TapTapKeyframe tapTapKeyframe(const TapTapDetector::Detection& detection, Seconds duration,
                                            IdSource& ids);

} // namespace morvelin
