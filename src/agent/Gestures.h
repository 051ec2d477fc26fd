// A hand for agents: moves, clicks, drags, scrolls and types with the ease and at the pace of a person's. Owned by the
// input tools.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/InputError.h"
#include "agent/KeyChord.h"
#include "agent/Turns.h"
#include "core/base/EventLoop.h"
#include "core/base/Task.h"
#include "platform/InputPosting.h"

namespace morvelin {

/// Gestures that are asked for at the same time are played one after the other. Each comes back when the desktop has taken
/// its last event. All on the main thread.
class Gestures {
public:
    using Played = Result<void, InputError>;

    /// How far a person scrolls, in pixels of the page.
    struct Distance {
        int dx = 0;
        int dy = 0;
    };

    /// What programs scroll by when the wheel turns by one notch: browsers exactly, others about.
    static constexpr double kPixelsPerNotch = 53;
    static constexpr Seconds kApproach{0.35}; ///< the move before a click or a drag
    static constexpr Seconds kShortestDrag{0.1};

    Gestures(EventLoop& loop, InputPosting& posting) : m_loop(loop), m_posting(posting), m_turns(loop) {}

    Task<Played> move(DesktopPoint target, Seconds duration);
    Task<Played> click(DesktopPoint target, PointerButton button, int count);
    Task<Played> drag(DesktopPoint from, DesktopPoint to, PointerButton button, Seconds duration);
    /// At `place`, or wherever the pointer is.
    Task<Played> scroll(std::optional<DesktopPoint> place, Distance distance, Seconds duration);
    Task<Played> type(std::vector<std::u32string> graphemes, Seconds delay);
    Task<Played> press(KeyChord chord);

private:
    Played postable();
    Task<void> glide(DesktopPoint target, int count, Seconds duration);
    Task<Played> typeGrapheme(const std::u32string& grapheme);

    EventLoop& m_loop;
    InputPosting& m_posting;
    Turns m_turns;
};

} // namespace morvelin
