// Tools that run a take.
#include "agent/ToolTable.h"

namespace morvelin::table {

std::vector<MCPTool> recordingTools() {
    return {
        tool("start_recording", R"(
            Start recording the screen. Returns once capture is actually running, so the next tool call is safe to
            make immediately.

            Only one recording can run at a time. The recording bar shows an "Agent" badge for the whole take, and
            the user can stop it at any point from the bar or the Morvelin menu.

            The recording **pauses itself between your actions**, so the time you spend deciding what to do next is
            not in the video. Otherwise a minute of clicking becomes several minutes of watching nothing happen. Use
            `wait` when you want a pause the viewer actually sees.)",
             {choice("source", {"display", "window", "area"},
                     "What to capture. 'display' records a whole screen, 'window' a single window, 'area' a rectangle. "
                     "Defaults to 'display'."),
              integer("display_id", "Which display to record, from recording_status.displays. Defaults to the main "
                                    "display. Only used when source is 'display'."),
              text("window_title", "Case-insensitive substring of the target window's title, matched against on-screen "
                                   "windows. Only used when source is 'window'."),
              record("rect", "Region to capture in screen points, top-left origin. Only used when source is 'area'.",
                     {number("x", "Left edge in screen points."), number("y", "Top edge in screen points."),
                      number("width", "Width in screen points."), number("height", "Height in screen points.")}),
              flag("microphone", "Record the default microphone. Defaults to false."),
              flag("system_audio", "Record system audio. Defaults to false."),
              flag("camera", "Record the webcam as a separate overlay track. Defaults to false."),
              flag("pace_to_actions",
                   "Pause the recording between your actions so only what you did is in the video. Defaults to true. "
                   "Turn it off when recording something that moves on its own (an animation, a video, a progress "
                   "bar), which would otherwise be cut out while you think.")}),

        tool("stop_recording", R"(
            Stop the current recording and write it to a .morvelin project bundle. Returns the bundle path and
            duration.

            Auto-zoom, click pings and the rest of the timeline are generated here from the cursor track, so the
            project is immediately exportable: call `export` next. A preview card also appears on screen for the
            user.)"),

        tool("pause_recording", R"(
            Pause the current recording. The paused span is cut out of the video, the audio and the cursor track
            alike, so it never appears in the export.

            Clicks and typing you do while paused still happen on screen; they are just not recorded, which is
            usually the point. Call `resume_recording` before anything you want in the video.)"),

        tool("resume_recording", "Resume a paused recording."),

        tool("recording_status", R"(
            Report whether a recording is running, how long it has been going, and what it is capturing. Also lists
            the displays available to `start_recording`.

            Check `can_capture_screen` and `can_control_pointer` before planning a script. Both are macOS
            permissions granted per copy of the app, so either can be missing even though Morvelin is clearly
            running; the errors say how to grant them.

            Safe to call at any time, including before any recording has ever started.)"),
    };
}

} // namespace morvelin::table
