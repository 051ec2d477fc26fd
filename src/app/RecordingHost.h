// Hosts the recordings of agents in the program without windows: one take at a time, each becoming a project. Owned by
// the `serve` command.
#pragma once

#include <map>
#include <memory>

#include "agent/MCPHost.h"
#include "capture/Take.h"
#include "platform/InputPosting.h"

namespace morvelin {

class RecordingHost final : public MCPHost {
public:
    struct Services {
        Take::Services take;
        InputPosting& posting;
        std::filesystem::path projectsFolder;
    };

    explicit RecordingHost(Services services) : m_services(std::move(services)) {}

    MCPRecordingStatus status() override;
    std::vector<MCPDisplay> displays() override;
    bool canCaptureScreen() override;
    std::optional<PointerSpace> recordedSpace() override;
    Task<Result<void, MCPHostError>> startRecording(MCPRecordingRequest request) override;
    Task<Result<MCPFinishedRecording, MCPHostError>> stopRecording() override;
    Result<void, MCPHostError> pauseRecording() override;
    Result<void, MCPHostError> resumeRecording() override;

    /// Finishes the recording that runs, if one does, before the program ends.
    Task<void> finish();

private:
    enum class Stage { Idle, Starting, Recording, Finishing };

    Result<CaptureTarget, MCPHostError> targetOf(const MCPRecordingRequest& request);
    Result<CaptureTarget, MCPHostError> displayNumbered(std::uint32_t id);
    Result<CaptureTarget, MCPHostError> windowTitled(const std::string& title);
    std::uint32_t numberOf(const std::string& displayID);
    Task<Result<MCPFinishedRecording, MCPHostError>> finishTake();
    Task<void> endByItself();
    void log(const std::string& sentence) const;

    Services m_services;
    Stage m_stage = Stage::Idle;
    std::unique_ptr<Take> m_take;
    std::string m_source;
    std::optional<MCPFinishedRecording> m_endedByItself;
    std::map<std::string, std::uint32_t> m_displayNumbers;
};

} // namespace morvelin
