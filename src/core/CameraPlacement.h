// Where the webcam's bubble lies over the video: the nine parking spots, and what keeps it inside the frame.
#pragma once

#include "core/Geometry.h"

namespace morvelin {

enum class CameraAnchor { TopLeft, Top, TopRight, Left, Center, Right, BottomLeft, Bottom, BottomRight };

constexpr auto rawValues(std::type_identity<CameraAnchor>) {
    using enum CameraAnchor;
    return std::to_array<std::pair<CameraAnchor, std::string_view>>({{TopLeft, "topLeft"},
                                                                     {Top, "top"},
                                                                     {TopRight, "topRight"},
                                                                     {Left, "left"},
                                                                     {Center, "center"},
                                                                     {Right, "right"},
                                                                     {BottomLeft, "bottomLeft"},
                                                                     {Bottom, "bottom"},
                                                                     {BottomRight, "bottomRight"}});
}

/// The bubble of that width, parked. `aspectRatio` is the video's width by its height, which makes the bubble a square
/// of pixels; one that is not above 0 counts as 1.
[[nodiscard]] NormalizedRect parked(CameraAnchor anchor, double aspectRatio, double width);

/// The spot at which the bubble is parked, if it is.
[[nodiscard]] std::optional<CameraAnchor> parkingSpot(const NormalizedRect& bubble, double aspectRatio);

/// The rectangle with sides of at least 0.02, moved into the frame; sizes are not lowered.
[[nodiscard]] NormalizedRect keptInside(NormalizedRect bubble);

} // namespace morvelin
