// Why a tool call was refused, in the words that an agent reads.
#pragma once

#include <string>
#include <variant>

namespace morvelin {

/// One tagged error for all tools that are not about a recording's host or an edit.
class MCPToolError {
public:
    struct UnknownTool {
        std::string name;
    };
    struct InvalidArgument {
        std::string name; ///< several that fail together are joined by slashes
        std::string reason;
    };
    struct ProjectNotFound {
        std::string path;
    };
    struct SidecarMissing {
        std::string path;
    };
    struct UnknownResource {
        std::string uri;
    };
    struct OperationInProgress {
        std::string what;
    };
    struct RenameFailed {
        std::string name;
    };
    struct HostUnavailable {};
    struct NoProjects {};
    struct NoExports {};
    using Reason = std::variant<UnknownTool, InvalidArgument, ProjectNotFound, SidecarMissing, UnknownResource,
                                OperationInProgress, RenameFailed, HostUnavailable, NoProjects, NoExports>;

    MCPToolError(Reason reason) : m_reason(std::move(reason)) {}

    [[nodiscard]] const Reason& reason() const { return m_reason; }
    [[nodiscard]] std::string description() const;

private:
    Reason m_reason;
};

} // namespace morvelin
