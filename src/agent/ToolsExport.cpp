// Tools for the finished video.
#include "agent/ToolTable.h"

namespace morvelin::table {

std::vector<MCPTool> exportTools() {
    return {
        tool("export", R"(
            Render a project to a video file and return its path, along with the paths of the machine-readable
            sidecars written beside it.

            Defaults to High: 1080p, source frame rate up to 60 fps. Leave `quality` alone unless you have a reason:
            the recording is the one thing you cannot go back and redo, and a demo that came out unreadable costs
            far more than the megabytes a lower step would have saved.

            Set `for_ai` when the video is going to be read by a model rather than watched by a person. That preset
            trades frame rate for resolution: 5 fps, long edge capped at 1536 px, no background, padding, zoom or
            captions, because a model samples the video into stills and downscales them, so small on-screen text
            surviving matters and smooth motion does not. It always writes MP4.)",
             {project(),
              choice("format", {"mp4", "gif"}, "Output format. Defaults to 'mp4'. Ignored when for_ai is set."),
              choice("quality", {"very_low", "low", "medium", "high", "ultra"},
                     "Render quality. Defaults to 'high': 1080p, source frame rate up to 60 fps. Ignored when for_ai "
                     "is set."),
              flag("for_ai", "Render for a model to read rather than a person to watch. Defaults to false.")}),

        tool("read_events", R"(
            Read the events sidecar written next to an export: every click, zoom, cut and annotation in the finished
            video, timestamped against that video's own timeline.

            This is how to find out what a recording actually contains without watching it. The file is
            self-describing: it carries its own coordinate and timing conventions, and a plain-language meaning for
            every effect type.)",
             {text("path", "Path to the exported video, or directly to its .events.json sidecar. Defaults to the most "
                           "recent export.")}),
    };
}

} // namespace morvelin::table
