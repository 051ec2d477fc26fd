// What the application reports when a recording or the editor cannot do what an agent asks.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace morvelin {

class MCPHostError {
public:
    struct WindowNotFound {
        std::string title;
    };
    struct DisplayNotFound {
        std::uint32_t id = 0;
    };
    struct CaptureFailed {
        std::string detail;
    };
    struct EditorFailed {
        std::string detail;
    };
    /// A recording that was stopped did not become a project; whole sentences.
    struct NotSaved {
        std::string detail;
    };
    struct AlreadyRecording {};
    struct NotRecording {};
    using Reason = std::variant<WindowNotFound, DisplayNotFound, CaptureFailed, EditorFailed, NotSaved,
                                AlreadyRecording, NotRecording>;

    MCPHostError(Reason reason) : m_reason(std::move(reason)) {}

    [[nodiscard]] std::string description() const;

private:
    Reason m_reason;
};

} // namespace morvelin
