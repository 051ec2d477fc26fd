// Tools for the zoom and position tracks.
#include "agent/ToolTable.h"

namespace morvelin::table {

std::vector<MCPTool> zoomTools() {
    return {
        tool("set_zoom", R"(
            Add a zoom at a point in time, optionally aimed at a spot.

            Morvelin already generates zooms automatically from the recorded clicks, so reach for this to correct or
            add emphasis rather than to build the whole timeline. `clear` throws the automatic ones away and leaves
            a still 1× video.

            Returns the new ramp's `id`, for `update_zoom` / `remove_zoom`. A ramp holds its level until the next
            one starts, so zooming back out is another `set_zoom` with factor 1. Ramps may not overlap: one starting
            while another is still in its transition, or whose transition would run past the next one's start, is
            refused with the free span to fit it in. A ramp at exactly the start of another replaces it.)",
             {project(), number("at", "When the zoom starts, in seconds."),
              number("factor", "Zoom level, 1–10. 1 zooms back out."),
              number("transition", "How long the ramp takes, in seconds. Defaults to 0.6."),
              number("x", "Horizontal focal point 0–1, given together with y. Without them the zoom follows the "
                          "position track as it stands."),
              number("y", "Vertical focal point 0–1, given together with x."),
              choice("curve", {"smooth", "linear"}, "Easing of the ramp. Defaults to smooth."),
              flag("clear", "Remove every zoom instead, including the automatic ones.")}),

        tool("update_zoom", R"(
            Change one zoom ramp, by id (from `set_zoom` or `describe_project`'s `zooms`). Anything left out keeps
            its value.

            A ramp starts at `start`, reaches `factor` after `transition` seconds, and holds it until the next ramp
            starts. Moving a ramp carries the position keys generated for it, exactly as dragging it on the timeline
            does. A ramp may not overlap another: a move or a longer transition that would is refused, with the free
            span it has to fit in. To move where one zoom hands over to the next the way the editor's boundary drag
            does — holding against ramps, merging what it crosses — use `roll_zoom_seam`.

            `x`/`y` re-aim the ramp's focal point: every position key the ramp owns moves with it. A ramp with none
            gets one where its transition ends.)",
             {project(), text("id", "The zoom's id."),
              number("start", "When the ramp starts, in seconds on the edit timeline."),
              number("transition", "How long the ramp takes, in seconds (min 0.05)."),
              number("factor", "Zoom level reached, 1–10. 1 zooms back out."),
              choice("curve", {"smooth", "linear"}, "Easing of the ramp."), number("x", "Horizontal focal point 0–1."),
              number("y", "Vertical focal point 0–1.")},
             {"id"}),

        tool("roll_zoom_seam", R"(
            Move the boundary between zoom `id` and the zoom before it to `to` — what dragging that boundary on the
            editor's Zoom lane does. A zoom holds its level until the next one starts, so there is one boundary
            between two zooms: moving it shortens one and lengthens the other, and the position keys pinned to it
            follow.

            Use this rather than `update_zoom` to change where one zoom hands over to the next. The boundary stops
            against a ramp instead of running over it. Carried across a whole zoom, it **merges** that zoom into its
            neighbour, as the editor does: the merged zoom's id is listed in `absorbed`, `survivor` is the one that
            remains, and their position keys are pooled into one pair. Merging is not undone by rolling back: call
            `describe_project` for the zooms as they now are.

            Returns where the boundary landed (`seam`) and the zooms on either side of it (`previous`, `zoom`). The
            first zoom has no boundary before it.)",
             {project(), text("id", "The zoom whose start is the boundary to move."),
              number("to", "Where to move it, in seconds on the edit timeline.")},
             {"id", "to"}),

        tool("rebuild_zoom_position_keys", R"(
            Repair the position keys of zoom `id` in one go — what the inspector's "Rebuild position keys" button
            does. Use it when a zoom's framing was left drifting by moved, stray or detached keys.

            The focal point framed in the middle of the zoom's hold (from the end of its ramp to the start of the
            next zoom) is kept; every position key from the start of its ramp to the end of its hold is removed,
            with any other key the zoom owns; then a fresh pair owned by the ramp lands on that focal point, as the
            auto timeline lays them: one where the ramp ends, one where the hold ends. A key on the ramp's very
            start is the previous zoom's hold end and stays, as does the first key of the track.

            Refused for a zoom to 1× or below: it frames the whole capture and owns no keys. Returns the zoom and
            its new position keys.)",
             {project(), text("id", "The zoom (a zoom-in ramp) whose position keys to rebuild.")}, {"id"}),

        tool("remove_zoom", R"(
            Delete one zoom ramp by id. The first ramp sets the level the video opens on and cannot be removed; set
            its factor to 1 instead. To drop every zoom, use `set_zoom` with `clear: true`.)",
             {project(), text("id", "The zoom's id.")}, {"id"}),

        tool("add_position_key", R"(
            Add a key to the position track: where the frame is aimed at a moment, at whatever zoom is active. Use
            it to pan while zoomed in without a new ramp.

            Coordinates are normalized 0–1, top-left origin, like `read_events`. What is stored is your target; the
            frame is clamped so it never shows past the edge of the capture at the current zoom. Returns the key's
            `id`.)",
             {project(), number("at", "When, in seconds on the edit timeline."),
              number("x", "Horizontal focal point 0–1."), number("y", "Vertical focal point 0–1.")},
             {"at", "x", "y"}),

        tool("update_position_key", R"(
            Move or re-aim one position key, by id (from `describe_project`'s `positions`). A key edited this way
            stops following the zoom ramp it was generated for, as when it is dragged in the editor. The first key
            anchors the track: it can be re-aimed but not moved in time. Keys stay at least 0.05s apart.)",
             {project(), text("id", "The position key's id."),
              number("time", "New time, in seconds on the edit timeline."), number("x", "Horizontal focal point 0–1."),
              number("y", "Vertical focal point 0–1.")},
             {"id"}),

        tool("remove_position_key",
             "Delete one position key by id. The first key anchors the track and cannot be removed.",
             {project(), text("id", "The position key's id.")}, {"id"}),

        tool("set_auto_timeline", R"(
            Change how the automatic zooms are generated from the recorded clicks — the Animation tab — and rebuild
            the zoom and position tracks from them. Anything left out keeps its value; with no settings at all it is
            "Reset to auto".

            A rebuild replaces the whole zoom and position tracks, so it throws away every hand edit to them
            (`set_zoom`, `update_zoom`, position keys). While there are any it is refused unless `force: true`.
            Cuts, speed, annotations and style are never touched. `describe_project` reports the current values in
            `auto_timeline`.)",
             {project(), number("zoom_transition", "Length of a zoom ramp in seconds, 0.2–4. Default 1."),
              number("click_anticipation", "How long before a click the zoom is settled, 0.05–1.5 s. Default 0.4."),
              number("zoom_out_after", "Idle time after a click before zooming back out, 1–20 s. Default 1."),
              choice("curve", {"smooth", "linear"}, "Easing of every generated ramp."),
              flag("rebuild", "Rebuild the tracks now. Defaults to true; false only stores the settings."),
              flag("force", "Rebuild even though the tracks have hand edits.")}),
    };
}

} // namespace morvelin::table
