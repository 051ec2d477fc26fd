#include "timeline/LiveFocusDetector.h"

#include <algorithm>
#include <iterator>

namespace morvelin {

std::vector<FocusKeyframe> LiveFocusDetector::scan(std::span<const CursorEvent> events, IdSource& ids) {
    for (; m_lastScanSize < events.size(); ++m_lastScanSize) {
        const CursorEvent& event = events[m_lastScanSize];
        switch (event.event) {
        case CursorEventType::Move:
            ++m_moves;
            if (auto found = m_walk.move({event.timestamp, event.x, event.y})) m_unreported.push_back(*found);
            break;
        case CursorEventType::MouseDown: m_walk.press(event.timestamp); break;
        case CursorEventType::MouseUp: break;
        }
    }
    if (m_moves <= FocusDetector::kTooFewMoves) return {};

    std::vector<FocusKeyframe> focuses;
    focuses.reserve(m_unreported.size());
    for (const auto& detection : m_unreported) focuses.push_back(focusKeyframe(detection, 0_s, ids));
    m_unreported.clear();
    return focuses;
}

void LiveFocusCollector::collect(std::span<const CursorEvent> events, IdSource& ids) {
    std::ranges::move(m_detector.scan(events, ids), std::back_inserter(m_focuses));
}

} // namespace morvelin
