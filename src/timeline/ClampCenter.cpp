#include "timeline/ClampCenter.h"

#include <algorithm>

namespace morvelin {

NormalizedPoint clampCenter(NormalizedPoint center, double zoom, double inset) {
    constexpr NormalizedPoint kMiddle{0.5, 0.5};
    if (!(zoom > 1)) return kMiddle;

    const double margin = inset > 0 ? std::min(inset, 0.45) : 0;
    const double picture = 1 - 2 * margin; // the capture's share of the stage
    const double reach = 0.5 / picture;
    const double half = 1 / (2 * zoom * picture);
    const double low = 0.5 - reach + half;
    const double high = 0.5 + reach - half;
    if (!(low < high)) return kMiddle;
    return {std::clamp(center.x, low, high), std::clamp(center.y, low, high)};
}

} // namespace morvelin
