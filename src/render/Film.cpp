#include "render/Film.h"

#include <algorithm>
#include <cmath>

namespace morvelin {

namespace {

/// Part of a frame that a length may lack or exceed by rounding without losing or gaining a frame.
constexpr double kFrameSlack = 1e-3;

} // namespace

std::int64_t Film::frameCount() const {
    const double frames = composition.timelineDuration().value * frameRate;
    if (!(frames > 0)) return 0;
    return std::max<std::int64_t>(1, static_cast<std::int64_t>(std::ceil(frames - kFrameSlack)));
}

std::int64_t Film::frameAt(EditTime t) const {
    const auto frame = static_cast<std::int64_t>(std::floor(t.value * frameRate + kFrameSlack));
    return std::clamp<std::int64_t>(frame, 0, std::max<std::int64_t>(frameCount() - 1, 0));
}

EditTime Film::frameTime(std::int64_t frame) const { return EditTime(static_cast<double>(frame) / frameRate); }

SourceTime Film::cameraTime(EditTime t) const {
    return composition.pictureTime(t) - instruction->cameraSettings->startOffset;
}

} // namespace morvelin
