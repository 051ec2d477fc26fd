#include "core/Keyframes.h"

#include <algorithm>

namespace morvelin {

double focusOpacity(const FocusKeyframe& key, EditTime t) {
    const Seconds length = key.endTime - key.startTime;
    if (length <= 0_s || t < key.startTime || t >= key.endTime) return 0;

    const Seconds fadeIn = std::min(0.4 * length, 0.2_s);
    const Seconds fadeOut = std::clamp(key.fadeOutDuration, 0_s, length);
    double opacity = std::min(1.0, (t - key.startTime) / fadeIn);
    if (const Seconds left = key.endTime - t; left < fadeOut) opacity = std::min(opacity, left / fadeOut);
    return std::clamp(opacity, 0.0, 1.0);
}

double tapTapOpacity(const TapTapKeyframe& key, EditTime t) {
    const Seconds length = key.endTime - key.startTime;
    if (length <= 0_s || t < key.startTime || t >= key.endTime) return 0;

    const double p = (t - key.startTime) / length;
    return std::clamp(std::min(p / 0.05, (1 - p) / 0.15), 0.0, 1.0);
}

} // namespace morvelin
