// Finds focus gestures while a take is still running.
#pragma once

#include <span>
#include <vector>

#include "timeline/FocusDetector.h"

namespace morvelin {

/// Follows a growing event list. It finds what `FocusDetector` finds in the whole list, but looks at each event only
/// once, so a scan costs what has come since the one before, however long the take is. One detector serves one take.
class LiveFocusDetector {
public:
    explicit LiveFocusDetector(FocusDetector detector = {}) : m_walk(detector.config) {}

    /// `events`: all of the take so far, in time order. Gives the gestures that were completed since the last scan.
    [[nodiscard]] std::vector<FocusKeyframe> scan(std::span<const CursorEvent> events, IdSource& ids);

private:
    FocusDetector::Walk m_walk;
    std::size_t m_lastScanSize = 0;
    std::size_t m_moves = 0;
    std::vector<FocusDetector::Detection> m_unreported;
};

/// The focus ovals of a running take.
class LiveFocusCollector {
public:
    void collect(std::span<const CursorEvent> events, IdSource& ids);

    [[nodiscard]] const std::vector<FocusKeyframe>& focuses() const { return m_focuses; }

private:
    LiveFocusDetector m_detector;
    std::vector<FocusKeyframe> m_focuses;
};

} // namespace morvelin
