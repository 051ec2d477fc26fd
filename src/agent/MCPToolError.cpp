#include "agent/MCPToolError.h"

#include <fmt/format.h>

namespace morvelin {

namespace {

struct Describe {
    std::string operator()(const MCPToolError::UnknownTool& error) const {
        return fmt::format("Unknown tool “{}”.", error.name);
    }
    std::string operator()(const MCPToolError::InvalidArgument& error) const {
        return fmt::format("Invalid value for “{}”: {}", error.name, error.reason);
    }
    std::string operator()(const MCPToolError::ProjectNotFound& error) const {
        return fmt::format("No .morvelin project at “{}”.", error.path);
    }
    std::string operator()(const MCPToolError::SidecarMissing& error) const {
        return fmt::format("No events sidecar next to “{}”. It is written on export when founder mode is on; "
                           "re-export to produce one.",
                           error.path);
    }
    std::string operator()(const MCPToolError::UnknownResource& error) const {
        return fmt::format("Unknown resource “{}”.", error.uri);
    }
    std::string operator()(const MCPToolError::OperationInProgress& error) const {
        return fmt::format("A {} is already in progress. Wait for it to finish before trying again.", error.what);
    }
    std::string operator()(const MCPToolError::RenameFailed& error) const {
        return fmt::format("The project could not be renamed to “{}” and keeps its old name. "
                           "Its folder may not be writable.",
                           error.name);
    }
    std::string operator()(const MCPToolError::HostUnavailable&) const {
        return "Morvelin is not ready to record yet. Try again in a moment.";
    }
    std::string operator()(const MCPToolError::NoProjects&) const {
        return "There are no recordings yet. Call start_recording to make one.";
    }
    std::string operator()(const MCPToolError::NoExports&) const {
        return "Nothing has been exported yet. Call export first.";
    }
};

} // namespace

std::string MCPToolError::description() const { return std::visit(Describe{}, m_reason); }

} // namespace morvelin
