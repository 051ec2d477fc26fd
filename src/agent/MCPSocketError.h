// Why agents cannot reach this program, in the words that its log tells the user.
#pragma once

#include <string>
#include <variant>

#include "core/base/Files.h"

namespace morvelin {

class MCPSocketError {
public:
    struct PathTooLong {
        std::string path;
    };
    struct SocketFailed {
        std::string call; ///< "socket", "bind" or "listen"
        int code = 0;     ///< errno
    };
    struct AlreadyServing {
        std::string path;
    };
    using Reason = std::variant<PathTooLong, SocketFailed, AlreadyServing, FileError>;

    MCPSocketError(Reason reason) : m_reason(std::move(reason)) {}

    [[nodiscard]] const Reason& reason() const { return m_reason; }
    [[nodiscard]] std::string description() const;

private:
    Reason m_reason;
};

} // namespace morvelin
