// The presses of a pointer track on the edit timeline, where zooms and the finished video need them.
#pragma once

#include <span>
#include <vector>

#include "core/CursorEvent.h"

namespace morvelin {

class FragmentMap;

/// The moment at which an uncut take shows a recorded one: before the first edit both clocks agree.
constexpr EditTime uncutEditTime(SourceTime s) { return EditTime(s.sinceZero()); }

/// Every press of an uncut take, in the order of the events.
[[nodiscard]] std::vector<ClickPing> clickPings(std::span<const CursorEvent> events);

/// The presses that an edit still shows, in the order of the events; those in cut-out parts are left out.
[[nodiscard]] std::vector<ClickPing> clickPings(std::span<const CursorEvent> events, const FragmentMap& fragments);

} // namespace morvelin
