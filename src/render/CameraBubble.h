// The webcam's bubble over the picture, which stays put while the screen zooms underneath: its place and its drawing.
// The layer is owned by a compositor.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "core/Style.h"
#include "platform/Picture.h"
#include "render/RoundedCoverage.h"
#include "render/StageGeometry.h"

namespace morvelin {

/// The bubble at one moment.
struct CameraBubble {
    RoundedRectangle square; ///< output pixels
    bool isMirrored = false;
    std::int64_t frame = -1; ///< the camera movie's frame that shows

    bool operator==(const CameraBubble&) const = default;
};

/// Where the bubble lies; nothing when it is too small to be seen.
[[nodiscard]] std::optional<CameraBubble> cameraBubble(const CameraSettings& settings, const Rectangle& videoRect,
                                                       std::int64_t frame);

/// Draws the bubble: a soft shadow, and the camera's picture cropped to a square with rounded corners.
class CameraLayer {
public:
    CameraLayer(PixelSize output, Subsampling subsampling);
    CameraLayer(CameraLayer&&) noexcept;
    CameraLayer& operator=(CameraLayer&&) noexcept;
    ~CameraLayer();

    /// Aims at a bubble; `picture` is the camera's frame, null without one: then nothing is drawn. Adds the boxes that
    /// will be drawn differently to `boxes`.
    void prepare(const std::optional<CameraBubble>& bubble, const std::shared_ptr<const Picture>& picture,
                 std::vector<PixelBox>& boxes);
    /// Lays the part in `box` over what is there.
    void draw(const PixelBox& box, Picture& out);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace morvelin
