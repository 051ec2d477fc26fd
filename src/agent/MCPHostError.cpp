#include "agent/MCPHostError.h"

#include <fmt/format.h>

namespace morvelin {

namespace {

struct Describe {
    std::string operator()(const MCPHostError::WindowNotFound& error) const {
        return fmt::format("No on-screen window matches “{}”. Windows without a title bar are not listed.",
                           error.title);
    }
    std::string operator()(const MCPHostError::DisplayNotFound& error) const {
        return fmt::format("Display {} is not connected. Call recording_status for the available displays.", error.id);
    }
    std::string operator()(const MCPHostError::CaptureFailed& error) const {
        return fmt::format("Could not start recording: {}", error.detail);
    }
    std::string operator()(const MCPHostError::EditorFailed& error) const {
        return fmt::format("Could not open the editor: {}", error.detail);
    }
    std::string operator()(const MCPHostError::NotSaved& error) const { return error.detail; }
    std::string operator()(const MCPHostError::AlreadyRecording&) const {
        return "A recording is already in progress. Call stop_recording first.";
    }
    std::string operator()(const MCPHostError::NotRecording&) const { return "No recording is in progress."; }
};

} // namespace

std::string MCPHostError::description() const { return std::visit(Describe{}, m_reason); }

} // namespace morvelin
