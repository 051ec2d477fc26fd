// Tools that cut and speed the timeline.
#include "agent/ToolTable.h"

namespace morvelin::table {

std::vector<MCPTool> cuttingTools() {
    return {
        tool("cut", R"(
            Remove a span from the timeline and close the gap. Everything after it moves earlier, so times taken
            from `describe_project` before a cut are stale after one, so re-read if you are making several.

            Annotations wholly inside the removed span go with it.)",
             {project(), number("from", "Start of the span to remove, in seconds."),
              number("to", "End of the span to remove, in seconds.")},
             {"from", "to"}),

        tool("trim", R"(
            Keep only `start`…`end` and drop the rest: the usual way to top and tail a recording that starts before
            you were ready.)",
             {project(), number("start", "Keep from here. Defaults to the beginning."),
              number("end", "Keep until here. Defaults to the end.")}),

        tool("set_speed", R"(
            Change playback speed over a span: 2 for twice as fast, 0.5 for half. Useful for skipping a long wait
            without cutting it out entirely, so the viewer still sees that it happened.)",
             {project(), number("from", "Start of the span, in seconds."), number("to", "End of the span, in seconds."),
              number("speed", "Playback rate, 0.2–20.")},
             {"from", "to", "speed"}),
    };
}

} // namespace morvelin::table
