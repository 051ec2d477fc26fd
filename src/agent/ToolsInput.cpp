// Tools that look at the screen and drive it: pointer, keyboard, and the pause between two actions.
#include "agent/ToolTable.h"

namespace morvelin::table {

std::vector<MCPTool> inputTools() {
    return {
        tool("screenshot", R"(
            Take a still of the screen and return it as an image.

            Call this before clicking anything. Positions in every pointer tool are normalized 0–1 with a top-left
            origin **against this same image**, so a spot you can see at three-quarters across and halfway down is
            `x: 0.75, y: 0.5`: no conversion, no pixel arithmetic.

            Morvelin's own windows are left out, so you never end up clicking the recording bar. While a recording
            is running the coordinates match the recorded area, which is also the space `read_events` reports in.)",
             {integer("display_id",
                      "Which display to capture, from recording_status.displays. Defaults to the main one.")}),

        tool("click", R"(
            Click at a position. Moves the pointer there first, along a curved path, so the motion reads naturally
            in the recording.

            Clicks made this way are indistinguishable from yours: they are recorded, they get click-ping
            animations, and Morvelin's auto-zoom follows them. So a demo an agent drives comes out with the same
            polish as one a person drove.)",
             {number("x", "Horizontal position 0–1, measured on the last screenshot."),
              number("y", "Vertical position 0–1, top-left origin."),
              choice("button", {"left", "right", "middle"}, "Which button. Defaults to left."),
              integer("count", "1 for a click, 2 for a double-click. Defaults to 1."), displayOfPosition()},
             {"x", "y"}),

        tool("move_mouse", R"(
            Move the pointer without clicking: to reveal a hover state, or to draw attention somewhere before
            talking about it.

            The path is eased rather than instant. That is not decoration: Morvelin's auto-zoom keys off where the
            cursor lingers, and a pointer that teleports produces no zoom at all.)",
             {number("x", "Horizontal position 0–1."), number("y", "Vertical position 0–1, top-left origin."),
              number("duration", "Travel time in seconds. Defaults to 0.35, at most 30."), displayOfPosition()},
             {"x", "y"}),

        tool("drag", R"(
            Press at one position, move to another, release: for sliders, handles and dragging files.)",
             {number("from_x", "Where to press, 0–1."), number("from_y", "Where to press, 0–1, top-left origin."),
              number("to_x", "Where to release, 0–1."), number("to_y", "Where to release, 0–1, top-left origin."),
              number("duration", "How long the drag takes. Defaults to 0.6, at most 30."),
              choice("button", {"left", "right", "middle"}, "Which button. Defaults to left."), displayOfPosition()},
             {"from_x", "from_y", "to_x", "to_y"}),

        tool("scroll", R"(
            Scroll by a number of pixels. Positive `dy` scrolls content down the page (the same direction a trackpad
            swipe up does).

            The scroll is spread smoothly over `duration` rather than jumping. One long scroll reads far better than
            several short ones: each separate call is a fresh acceleration, which on screen looks like stuttering.)",
             {number("dy", "Vertical distance in pixels. Positive scrolls down the page."),
              number("dx", "Horizontal distance in pixels."),
              number("duration", "Seconds the scroll takes. Defaults to 0.7, at most 30. Give a long scroll a "
                                 "proportionally longer duration."),
              number("x", "Position to scroll at, 0–1. Defaults to wherever the pointer already is."),
              number("y", "Position to scroll at, 0–1, top-left origin."), displayOfPosition()}),

        tool("type", R"(
            Type text into whatever has keyboard focus. Click the field first.

            Sent as Unicode rather than as key presses, so accents, emoji and symbols work regardless of the
            keyboard layout. Use `press_key` for shortcuts and for keys that have no character, like Return or
            Escape.)",
             {text("text", "What to type."),
              number("delay", "Seconds between characters. Defaults to 0.012: visible as typing in the recording "
                              "rather than text appearing at once. Use 0 for speed. At most 1.")},
             {"text"}),

        tool("press_key", R"(
            Press one key, with modifiers: `cmd+s`, `escape`, `cmd+shift+p`, `return`, `f5`. Modifiers can be
            written into the key or passed separately.)",
             {text("key", "The key, e.g. \"return\", \"escape\", \"cmd+s\", \"a\"."),
              texts("modifiers", "Extra modifiers: cmd, shift, alt, ctrl.")},
             {"key"}),

        tool("wait", R"(
            Pause for a moment before the next action.

            Worth using more than feels necessary. Pacing is most of the difference between a recording someone can
            follow and one that is a seizure, and it also gives the app under test time to actually finish what your
            last click started.)",
             {number("seconds", "How long to wait. Capped at 30.")}, {"seconds"}),
    };
}

} // namespace morvelin::table
