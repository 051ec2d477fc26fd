#include "agent/MCPSocketError.h"

#include <cstring>

#include <fmt/format.h>

namespace morvelin {

namespace {

struct Describe {
    std::string operator()(const MCPSocketError::PathTooLong& error) const {
        return fmt::format("Socket path is too long for a UNIX domain socket: {}", error.path);
    }
    std::string operator()(const MCPSocketError::SocketFailed& error) const {
        return fmt::format("{} failed: {}", error.call, std::strerror(error.code));
    }
    std::string operator()(const MCPSocketError::AlreadyServing& error) const {
        return fmt::format("Another copy of Morvelin is already serving agents at {}. "
                           "Quit it and reopen this one to take over.",
                           error.path);
    }
    std::string operator()(const FileError& error) const { return error.description(); }
};

} // namespace

std::string MCPSocketError::description() const { return std::visit(Describe{}, m_reason); }

} // namespace morvelin
