// Tools for how the video is framed, and for its webcam bubble.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "agent/ToolTable.h"
#include "core/Style.h"

namespace morvelin::table {

namespace {

std::string cursorStyleDescription() {
    std::vector<std::string_view> names;
    for (const auto& [style, name] : rawValues(std::type_identity<CursorStyle>{})) names.push_back(name);
    return fmt::format("Pointer artwork: {}. \"system\" is the macOS cursor.", fmt::join(names, ", "));
}

} // namespace

std::vector<MCPTool> styleTools() {
    return {
        tool("set_style", R"(
            Change how the video is framed. Every field is optional and anything left out keeps its current value.

            `background` takes a gradient or wallpaper name, a plain-colour preset ("Cobalt"), or any colour as
            `#RRGGBB` — `describe_project` lists the names. `background: "none"` also sets padding to 0: a
            background of none behind a padded frame is just a black border. `background_image` uses a picture of
            your own; it is copied into the project, so the original can move afterwards.

            `tap_tap_style` and `tap_tap_size` apply to every tap-tap in the version: the hand they are drawn with,
            and an overall size that multiplies each one's own `size`.

            The `cursor_*` fields apply to recordings captured without the system cursor, where Morvelin draws the
            pointer (`describe_project` → `style.cursor_drawn`). A catalogue `cursor_style` replaces the arrow only;
            text, link and resize cursors keep their recorded shape. `cursor_smoothing` keeps every click and pause
            where it happened and smooths the moves between them.)",
             {project(),
              text("background", "Background name, a colour as #RRGGBB, or \"none\". Call describe_project for the "
                                 "names this build has."),
              text("background_image",
                   "Path to an image file (PNG, JPEG, HEIC…) to use as the background. Copied into the project."),
              number("padding", "Space around the video as a fraction of its size, 0–0.4."),
              number("corner_radius", "Corner rounding as a fraction of the frame's shorter side, 0–0.04."),
              number("shadow", "Drop shadow strength, 0–1."),
              flag("captions", "Burn transcript captions into the video."),
              number("caption_size", "Caption text size, 0.5–1.5 (1 is the default)."),
              flag("click_animations", "Show the ping animation on each recorded click."),
              flag("camera", "Include the webcam bubble, when the recording has one."),
              choice("tap_tap_style", {"pointer", "glove"},
                     "The hand every tap-tap is drawn with: an amber glass hand on a gold stick, or a white glove."),
              number("tap_tap_size",
                     "Overall size of every tap-tap, 0.5–2 (1 is the default). Multiplies each one's own size."),
              flag("cursor", "Draw the pointer. Off hides it from the whole video."),
              text("cursor_style", cursorStyleDescription()),
              number("cursor_size", "Pointer size, 0.5–3 (1 is the recorded size, 1.5 the default)."),
              number("cursor_smoothing",
                     "How smoothly the pointer moves between clicks, 0–1 (0 plays it as recorded).")}),

        tool("set_camera", R"(
            Place and style the webcam bubble, for recordings made with a camera. Anything left out keeps its value.

            The bubble sits over the video but outside the zoom: it holds its spot while the screen zooms
            underneath. Park it with `anchor` (the nine spots of the inspector's grid), or place its top-left corner
            with `x`/`y`, normalized 0–1 over the video frame. It is kept inside the frame either way. A parked
            bubble stays parked when resized.)",
             {project(), flag("visible", "Show the bubble in the preview and export."),
              number("size", "Bubble width as a fraction of the video width, 0.08–0.5."),
              choice("anchor",
                     {"topLeft", "top", "topRight", "left", "center", "right", "bottomLeft", "bottom", "bottomRight"},
                     "Parking spot."),
              number("x", "Left edge 0–1, when not using anchor."), number("y", "Top edge 0–1, when not using anchor."),
              number("corner_radius", "Rounding as a fraction of the bubble's side, 0–0.5 (0.5 is a circle)."),
              flag("mirrored", "Flip the image horizontally, like a self-view.")}),
    };
}

} // namespace morvelin::table
