// The recording family of tools: start, stop, pause, resume, status, and what is narrated in mid-take.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/AgentRecordingPacer.h"
#include "agent/CommandTable.h"
#include "agent/MCPHost.h"
#include "platform/InputPosting.h"

namespace morvelin {

/// Confined to the main thread. Without a host nothing can be recorded, and each tool says so.
class RecordingTools {
public:
    struct Services {
        EventLoop& loop;
        MCPHost* host = nullptr;         ///< null where nothing records, as in a command that works on the files
        InputPosting* posting = nullptr; ///< null together with the host
    };

    RecordingTools(Services services, AgentRecordingPacer& pacer);
    RecordingTools(const RecordingTools&) = delete;
    RecordingTools& operator=(const RecordingTools&) = delete;

    /// After the tools that edit projects, whose `narrate` it takes over in mid-take.
    void addTo(CommandTable& commands);

private:
    /// A line that waits for the end of its take.
    struct PendingNarration {
        std::string text;
        double at = 0; ///< seconds into the recording
        std::optional<double> duration;
    };
    struct WrittenNarration {
        int lines = 0;
        int failed = 0;
    };

    Task<ToolOutcome> start(JSONValue arguments);
    Task<ToolOutcome> stop(JSONValue arguments);
    ToolOutcome pause();
    ToolOutcome resume();
    [[nodiscard]] JSONValue status();
    Task<MCPToolResult> narrate(JSONValue arguments);
    ToolOutcome keepNarration(const ArgumentReader& arguments);
    Task<WrittenNarration> writeNarration(std::filesystem::path bundle);
    Task<void> finishEndedRecording(std::filesystem::path bundle);

    Services m_services;
    AgentRecordingPacer& m_pacer;
    CommandTable::Command m_narrateOnDisk;
    std::vector<PendingNarration> m_pendingNarration;
    bool m_isStartingRecording = false;
};

} // namespace morvelin
