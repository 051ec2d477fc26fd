#include "core/CameraPlacement.h"

#include <algorithm>
#include <cmath>

namespace morvelin {

namespace {

constexpr double kMargin = 0.03; ///< of the frame's width
constexpr double kLeastSide = 0.02;
constexpr double kSamePlace = 0.0005; ///< places come back rounded to a thousandth

/// The column or row of a spot: 0 is the near edge, 1 the middle, 2 the far edge.
double along(int place, double length, double margin) {
    if (place == 0) return margin;
    return place == 1 ? (1 - length) * 0.5 : 1 - length - margin;
}

} // namespace

NormalizedRect parked(CameraAnchor anchor, double aspectRatio, double width) {
    const double aspect = aspectRatio > 0 ? aspectRatio : 1;
    const int spot = static_cast<int>(anchor);
    const double height = aspect * width;
    return {along(spot % 3, width, kMargin), along(spot / 3, height, aspect * kMargin), width, height};
}

std::optional<CameraAnchor> parkingSpot(const NormalizedRect& bubble, double aspectRatio) {
    for (const auto& [anchor, name] : rawValues(std::type_identity<CameraAnchor>{})) {
        const NormalizedRect spot = parked(anchor, aspectRatio, bubble.width);
        if (std::abs(spot.x - bubble.x) <= kSamePlace && std::abs(spot.y - bubble.y) <= kSamePlace) return anchor;
    }
    return std::nullopt;
}

NormalizedRect keptInside(NormalizedRect bubble) {
    bubble.width = std::max(bubble.width, kLeastSide);
    bubble.height = std::max(bubble.height, kLeastSide);
    bubble.x = std::clamp(bubble.x, 0.0, std::max(0.0, 1 - bubble.width));
    bubble.y = std::clamp(bubble.y, 0.0, std::max(0.0, 1 - bubble.height));
    return bubble;
}

} // namespace morvelin
