// Why an agent client's configuration file could not be read or changed, in the words that the user reads.
#pragma once

#include <string>
#include <variant>

namespace morvelin {

class MCPInstallError {
public:
    struct Unreadable {
        std::string file;
        std::string detail;
    };
    struct Malformed {
        std::string file;
    };
    struct WriteFailed {
        std::string file;
        std::string detail;
    };
    using Reason = std::variant<Unreadable, Malformed, WriteFailed>;

    MCPInstallError(Reason reason) : m_reason(std::move(reason)) {}

    [[nodiscard]] const Reason& reason() const { return m_reason; }
    [[nodiscard]] std::string description() const;

private:
    Reason m_reason;
};

} // namespace morvelin
