// Tools that look at projects and change nothing.
#include "agent/ToolTable.h"

namespace morvelin::table {

std::vector<MCPTool> readingTools() {
    return {
        tool("list_projects", R"(
            List the .morvelin projects on disk, most recently modified first. Use the returned `path` wherever a
            tool takes a `project`.)",
             {integer("limit", "Maximum number of projects to return. Defaults to 20.")}),

        tool("describe_project", R"(
            Everything needed to edit a project without opening it: duration, fragments, click landmarks, zoom ramps
            and position keys with their ids, annotations, narration, style, camera, versions, and the background
            names `set_style` accepts.

            Worth calling before the first edit to a project: times in every editing tool are seconds on the **edit
            timeline**, which is shorter than the recording once anything has been cut.

            On a long recording, pass `from` / `until` to get only what touches that span: fragments, clicks, zooms,
            position keys, annotations and narration are narrowed to it, plus the zoom ramp and the position key on
            either side that decide what the span opens on. A `window` block then gives the zoom and framing at
            `from` and the whole project's totals, so a narrowed answer is not mistaken for all of it.)",
             {project(),
              number("from", "Start of the span, in edit-timeline seconds. Defaults to 0 when only until is given."),
              number("until",
                     "End of the span, in edit-timeline seconds. Defaults to the end when only from is given.")}),

        tool("read_source_frame", R"(
            Look at a project's raw recording at a moment in time: the frame as captured, with no background,
            padding, zoom, pings, annotations or captions.

            This is how to find something in a recording you did not watch being made. Positions are normalized 0–1
            with a top-left origin **against this image**, and that is the capture space every editing tool aims in:
            a spot you see at three-quarters across and halfway down is `set_zoom(x: 0.75, y: 0.5)`, with no
            conversion. Pick the time from `describe_project` (its `click_landmarks` are the moments something
            changed on screen).

            Unlike `screenshot`, which shows the display as it is now, this reads the bundle. It works while the
            project is open in the editor, and shows its last saved state. Returned as a PNG, long edge at most 1536
            px.)",
             {project(), number("at", "The moment to read, in seconds."),
              choice(
                  "clock", {"timeline", "source"},
                  "What `at` is measured on. 'timeline' (default) is the edit timeline every editing tool uses; "
                  "'source' is seconds into the original recording, and also reaches footage that has been cut out.")},
             {"at"}),

        tool("read_rendered_frame", R"(
            Look at a moment of the finished video without exporting it: the frame exactly as `export` would draw
            it, with the background, padding, rounded corners, shadow, zoom, click pings, focus and tap-tap effects,
            masks, captions and webcam bubble.

            Use it to check an edit landed where you meant — that a zoom frames what it should, that a mask covers
            what it has to — before paying for an export.

            Positions in this image are **not** capture coordinates: padding and zoom move everything. To aim an
            edit, read `read_source_frame` at the same time instead.

            `at` is in seconds on the edit timeline. Returned as a PNG, long edge at most 1536 px.)",
             {project(), number("at", "The moment to read, in seconds on the edit timeline.")}, {"at"}),
    };
}

} // namespace morvelin::table
