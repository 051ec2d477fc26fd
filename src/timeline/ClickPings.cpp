#include "timeline/ClickPings.h"

#include "timeline/FragmentMap.h"

namespace morvelin {

namespace {

template <class TimeMapping>
std::vector<ClickPing> pings(std::span<const CursorEvent> events, TimeMapping&& editTime) {
    std::vector<ClickPing> clicks;
    for (const CursorEvent& event : events) {
        if (event.event != CursorEventType::MouseDown) continue;
        if (const std::optional<EditTime> time = editTime(event.timestamp))
            clicks.push_back(
                {*time, event.x, event.y, event.button.value_or(MouseButton::Left), event.clickCount.value_or(1)});
    }
    return clicks;
}

} // namespace

std::vector<ClickPing> clickPings(std::span<const CursorEvent> events) {
    return pings(events, [](SourceTime s) { return std::optional(uncutEditTime(s)); });
}

std::vector<ClickPing> clickPings(std::span<const CursorEvent> events, const FragmentMap& fragments) {
    return pings(events, [&](SourceTime s) { return fragments.editTime(s); });
}

} // namespace morvelin
