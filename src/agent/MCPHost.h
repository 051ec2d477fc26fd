// What the tools need of the application: the one recording that may run, and the displays. Implemented by the program.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "agent/MCPHostError.h"
#include "capture/CaptureTarget.h"
#include "capture/PointerSpace.h"
#include "core/base/Result.h"
#include "core/base/Task.h"
#include "core/base/Time.h"

namespace morvelin {

/// What an agent wants recorded.
struct MCPRecordingRequest {
    enum class Source { Display, Window, Area };

    Source source = Source::Display;
    std::optional<std::uint32_t> displayID; ///< absent: the main display
    std::string windowTitle;
    PointRect rect;
    bool microphone = false;
    bool systemAudio = false;
    bool camera = false;
};

/// A recording that became a project.
struct MCPFinishedRecording {
    std::filesystem::path bundleURL;
    std::string name;
    Seconds duration;
    std::optional<std::string> interruption; ///< why it ended before it was stopped
};

struct MCPRecordingStatus {
    bool isRecording = false;
    bool isPaused = false;
    Seconds elapsed; ///< of what is recorded, without its pauses
    std::optional<std::string> source;
    bool isAgentDriven = false;
    /// How the recording before went that nobody stopped.
    std::optional<MCPFinishedRecording> endedByItself;
};

struct MCPDisplay {
    std::uint32_t id = 0; ///< stays a display's own while the program runs
    std::string name;
    PixelBox frame; ///< on the desktop
    double pointPixelScale = 1;
    bool isMain = false;
};

/// On the main thread only.
class MCPHost {
public:
    virtual ~MCPHost() = default;

    [[nodiscard]] virtual MCPRecordingStatus status() = 0;
    [[nodiscard]] virtual std::vector<MCPDisplay> displays() = 0;
    [[nodiscard]] virtual bool canCaptureScreen() = 0;
    /// The area that is being recorded; nothing while no recording runs.
    [[nodiscard]] virtual std::optional<PointerSpace> recordedSpace() = 0;

    /// Comes back when the recording runs.
    [[nodiscard]] virtual Task<Result<void, MCPHostError>> startRecording(MCPRecordingRequest request) = 0;
    /// Comes back when the project is written.
    [[nodiscard]] virtual Task<Result<MCPFinishedRecording, MCPHostError>> stopRecording() = 0;
    [[nodiscard]] virtual Result<void, MCPHostError> pauseRecording() = 0;
    [[nodiscard]] virtual Result<void, MCPHostError> resumeRecording() = 0;

    /// Called with the project of a recording that ended without an agent's stop. Set by the tools.
    std::function<void(const MCPFinishedRecording&)> onEndedByItself;
};

} // namespace morvelin
