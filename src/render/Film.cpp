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

EditTime Film::frameTime(std::int64_t frame) const { return EditTime(static_cast<double>(frame) / frameRate); }

} // namespace morvelin
