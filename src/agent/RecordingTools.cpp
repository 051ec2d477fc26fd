#include "agent/RecordingTools.h"

namespace morvelin {

namespace {

/// `recording_status` as it reads without a host: nothing runs, and nothing can be recorded or controlled.
ToolOutcome statusWithoutHost(const ArgumentReader&) {
    return JSONValue{{"recording", false},
                     {"paused", false},
                     {"elapsed", 0},
                     {"agent_driven", false},
                     {"can_control_pointer", false},
                     {"can_capture_screen", false},
                     {"displays", JSONValue::array()}};
}

ToolOutcome withoutHost(const ArgumentReader&) { return refusal(MCPToolError(MCPToolError::HostUnavailable{})); }

} // namespace

void RecordingTools::addTo(CommandTable& commands) const {
    commands.add("recording_status", statusWithoutHost);
    for (const char* tool : {"start_recording", "stop_recording", "pause_recording", "resume_recording"})
        commands.add(tool, withoutHost);
}

} // namespace morvelin
