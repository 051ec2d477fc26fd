// What one output frame shows: a pure function of the instruction, the time and the recording's frame. Equal plans of
// one instruction are the same picture, so nothing needs to be decoded, drawn or encoded between them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "core/Geometry.h"
#include "core/base/Time.h"
#include "platform/Picture.h"
#include "render/CameraBubble.h"
#include "render/CaptionOverlay.h"
#include "render/CompositionInstruction.h"
#include "render/FocusOval.h"
#include "render/StageGeometry.h"
#include "render/TapTapHand.h"

namespace morvelin {

/// A blurred rectangle of the picture.
struct MaskPlacement {
    Rectangle rect;   ///< output pixels
    double sigma = 0; ///< standard deviation of the blur in output pixels, above 0

    bool operator==(const MaskPlacement&) const = default;
};

/// One ring of a click, clipped to the rounded picture.
struct PingRing {
    double centerX = 0; ///< output pixels
    double centerY = 0;
    double diameter = 0;
    double lineWidth = 0;
    CodableColor color; ///< its alpha holds the fade

    bool operator==(const PingRing&) const = default;
};

/// The pointer's image over the picture; it may reach over the picture's edge.
struct PointerPlacement {
    std::shared_ptr<const Image> image;
    Rectangle rect; ///< output pixels

    bool operator==(const PointerPlacement&) const = default;
};

/// Every layer of one frame with its geometry, from the bottom up.
struct FramePlan {
    StageGeometry stage;
    std::int64_t sourceFrame = -1; ///< the movie's frame that shows
    std::vector<MaskPlacement> masks;
    std::vector<PingRing> rings;
    std::optional<PointerPlacement> pointer;
    std::vector<FocusOval> ovals;
    std::vector<TapTapHand> hands;
    std::optional<CameraBubble> camera;
    std::optional<CaptionPlacement> caption;

    bool operator==(const FramePlan&) const = default;
};

/// The numbers of the movies' frames that show at a moment.
struct FrameNumbers {
    std::int64_t recording = -1;
    std::int64_t camera = -1; ///< below 0 when there is no camera, or it has no picture then

    bool operator==(const FrameNumbers&) const = default;
};

/// The plan of the frame at `t`, when those frames of the movies show.
[[nodiscard]] FramePlan framePlan(const CompositionInstruction& instruction, EditTime t, const FrameNumbers& frames);

} // namespace morvelin
