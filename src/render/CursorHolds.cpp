#include "render/CursorHolds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "timeline/Tolerance.h"

namespace morvelin {

namespace {

constexpr double kDragDistance = 4; ///< points
constexpr double kSamePlace = 0.0001;

double pointsBetween(double x, double y, const CursorEvent& event, CaptureSize captureSize) {
    return std::hypot((event.x - x) * captureSize.width, (event.y - y) * captureSize.height);
}

bool isClick(const CursorEvent& event) { return event.event != CursorEventType::Move; }

/// A press that waits for its release, and how far the pointer has been from it.
struct Press {
    CursorHold hold;
    double farthest = 0;
};

} // namespace

std::vector<CursorHold> cursorDrags(std::span<const CursorEvent> events, CaptureSize captureSize) {
    std::vector<CursorHold> drags;
    std::array<std::optional<Press>, 3> pressed; // by button
    for (const CursorEvent& event : events) {
        for (auto& press : pressed) {
            if (!press) continue;
            const double distance = pointsBetween(press->hold.x, press->hold.y, event, captureSize);
            press->farthest = std::max(press->farthest, distance);
        }
        if (!isClick(event)) continue;

        auto& press = pressed[static_cast<std::size_t>(event.button.value_or(MouseButton::Left))];
        if (event.event == CursorEventType::MouseDown) {
            press = Press{{event.timestamp, event.timestamp, event.x, event.y}};
        } else if (press) {
            press->hold.end = event.timestamp;
            if (press->farthest >= kDragDistance - kTolerance) drags.push_back(press->hold);
            press.reset();
        }
    }
    std::ranges::stable_sort(drags, {}, &CursorHold::start);
    return drags;
}

std::vector<CursorHold> cursorPins(std::span<const CursorEvent> events, CaptureSize captureSize) {
    std::vector<CursorHold> pins;
    bool strayed = false;
    for (const CursorEvent& event : events) {
        if (!pins.empty())
            strayed = strayed ||
                      pointsBetween(pins.back().x, pins.back().y, event, captureSize) > kDragDistance + kTolerance;
        if (!isClick(event)) continue;

        const bool samePlace = !pins.empty() && std::abs(event.x - pins.back().x) <= kSamePlace + kTolerance &&
                               std::abs(event.y - pins.back().y) <= kSamePlace + kTolerance;
        if (samePlace && !strayed)
            pins.back().end = event.timestamp;
        else
            pins.push_back({event.timestamp, event.timestamp, event.x, event.y});
        strayed = false;
    }
    return pins;
}

} // namespace morvelin
