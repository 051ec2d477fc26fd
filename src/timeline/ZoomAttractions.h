// What draws an automatic zoom: clicks, and the gestures that the pointer made.
#pragma once

#include <span>
#include <vector>

#include "timeline/FocusDetector.h"
#include "timeline/TapTapDetector.h"

namespace morvelin {

class FragmentMap;

struct PointerGestures {
    std::vector<FocusDetector::Detection> focuses;
    std::vector<TapTapDetector::Detection> tapTaps;

    [[nodiscard]] static PointerGestures of(std::span<const CursorEvent> events);
};

/// The presses of an uncut take, and a press for each gesture where it began.
[[nodiscard]] std::vector<ClickPing> zoomAttractions(std::span<const CursorEvent> events,
                                                     const PointerGestures& gestures);

/// The same where an edit still shows them.
[[nodiscard]] std::vector<ClickPing> zoomAttractions(std::span<const CursorEvent> events,
                                                     const PointerGestures& gestures, const FragmentMap& fragments);

} // namespace morvelin
