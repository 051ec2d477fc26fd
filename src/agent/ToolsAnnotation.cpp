// Tools for the editorial cues laid over a recording.
#include "agent/ToolTable.h"

namespace morvelin::table {

std::vector<MCPTool> annotationTools() {
    return {
        tool("annotate", R"(
            Add an editorial cue to a recording. Three kinds:

            - `focus`: a hand-drawn oval around `rect`, for "look here".
            - `taptap`: a cartoon hand tapping `x`,`y` twice, for "read this".
            - `mask`: a privacy blur over `rect`. Defaults to lasting until the end of   the video, because a
            redaction that stops early is worse than none.

            Coordinates are normalized 0–1 with a top-left origin, relative to the captured screen area, the same
            space `read_events` reports in, so a point read from there can be passed straight back here.

            `target` says what you are pointing at. Set it: it is written into the events sidecar, and it is the
            only way a later reader learns that the oval was around the Export button rather than around some
            rectangle.)",
             {project(), choice("type", {"focus", "taptap", "mask"}, "Which cue to add."),
              number("at", "When it appears, in seconds on the edit timeline."),
              number("until", "When it disappears. Defaults to a natural length for the type: 3s for focus, 0.9s for "
                              "taptap, end of video for mask."),
              number("x", "Horizontal position 0–1, for taptap."), number("y", "Vertical position 0–1, for taptap."),
              normalizedRect(),
              text("label",
                   "What this points at, in plain words: \"the Export button\". Written into the events sidecar."),
              choice("target_kind", {"text", "button", "icon", "image", "region"},
                     "What kind of thing the label names."),
              number("blur_radius", "Blur strength for a mask. Defaults to 24."),
              number("size", "Hand height as a fraction of the video height, for taptap, before the version's overall "
                             "tap_tap_size (set_style). 0.08–0.6, defaults to 0.12.")},
             {"type", "at"}),

        tool("remove_annotation", R"(
            Delete an annotation by id (ids come from `annotate` or `describe_project`), or pass `all: true` to
            clear every one — optionally only those of one `type`: `all: true, type: "mask"` removes every privacy
            mask.)",
             {project(), text("id", "The annotation's id."), flag("all", "Remove every annotation instead of one."),
              choice("type", {"focus", "taptap", "mask"}, "With all: only this kind.")}),

        tool("update_annotation", R"(
            Change an annotation after it was placed, by id: move or resize it in time, move or resize it on screen,
            change a mask's blur or a tap-tap's size, re-label its target. Anything left out keeps its value.

            Giving `at` alone slides the whole annotation; giving `until` resizes it. Fields that do not apply to
            the annotation's type are refused by name: a focus has `rect`, `fade_out` and a target; a mask has
            `rect` and `blur_radius`; a taptap has `x`, `y`, `size` and a target. Coordinates are normalized 0–1,
            top-left origin.)",
             {project(), text("id", "The annotation's id."),
              number("at", "New start, in seconds on the edit timeline."), number("until", "New end, in seconds."),
              normalizedRect(), number("blur_radius", "Mask blur strength, 6–64."),
              number("x", "Tap-tap horizontal position 0–1."), number("y", "Tap-tap vertical position 0–1."),
              number("size", "Tap-tap hand height as a fraction of the video height, 0.08–0.6."),
              number("fade_out", "Focus fade-out length in seconds."),
              text("label", "What it points at, in plain words. Empty string clears it."),
              choice("target_kind", {"text", "button", "icon", "image", "region"},
                     "What kind of thing the label names.")},
             {"id"}),
    };
}

} // namespace morvelin::table
