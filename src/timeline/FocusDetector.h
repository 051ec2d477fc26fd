// Finds where the pointer circled something twice: "look here".
#pragma once

#include <numbers>
#include <optional>
#include <span>
#include <vector>

#include "core/CursorEvent.h"
#include "core/Keyframes.h"
#include "timeline/PointerGesture.h"

namespace morvelin {

class FocusDetector {
public:
    /// Distances are fractions of the capture.
    struct Config {
        double requiredTurnRadians = 4 * std::numbers::pi - 0.6; ///< two circles, less a little
        Seconds maxGestureDuration = 3_s;
        double minStepDistance = 0.0025; ///< shortest step that has a direction
        Seconds pauseResetDuration = 0.1_s;
        double stationaryEpsilon = 0.0006;
        double reversalDeadzone = 0.175; ///< greatest turn against the sense of rotation that is forgiven, radians
        double minZoneSize = 0.02;       ///< of the circled box's smaller side
        double maxZoneSize = 0.6;        ///< of its larger side
        double zonePaddingFraction = 0.1;
        double zonePaddingMin = 0.008;
    };

    struct Detection {
        NormalizedRect rect;
        SourceTime startTime;
        NormalizedPoint center; ///< of the circled box, without its margin
        SourceTime endTime;
    };

    class Walk;

    /// With this many moves or fewer there is no gesture.
    static constexpr std::size_t kTooFewMoves = 8;

    /// The gestures in time order; the events may come in any order.
    [[nodiscard]] std::vector<Detection> detect(std::span<const CursorEvent> events) const;
    [[nodiscard]] std::vector<Detection> detect(const PointerTrack& track) const;

    Config config;
};

/// One walk along a pointer track in time order, with the gesture under way.
class FocusDetector::Walk {
public:
    using Detection = FocusDetector::Detection;

    explicit Walk(const Config& config);

    void press(SourceTime t) { m_clock.press(t); }
    /// The gesture that this sample completes, if any.
    [[nodiscard]] std::optional<Detection> move(const PointerSample& sample);

private:
    struct Step {
        double x = 0;
        double y = 0;
    };

    void restart(const PointerSample& sample);
    void turn(double angle, const PointerSample& sample);
    [[nodiscard]] std::optional<Detection> judge(SourceTime endTime) const;

    Config m_config;
    GestureClock m_clock;
    bool m_restartsNext = true;
    PointerSample m_anchor; ///< of the last counted step
    std::optional<Step> m_heading;
    double m_turned = 0; ///< radians, with their sense
    GestureBox m_box;
};

/// The oval that a detection asks for. A take's first timeline agrees with the source clock; its end is limited to a
/// `duration` above 0.
[[nodiscard]] FocusKeyframe focusKeyframe(const FocusDetector::Detection& detection, Seconds duration, IdSource& ids);

} // namespace morvelin
