#include "agent/MCPInstallError.h"

#include <fmt/format.h>

namespace morvelin {

namespace {

struct Describe {
    std::string operator()(const MCPInstallError::Unreadable& error) const {
        return fmt::format("Could not read {}: {}", error.file, error.detail);
    }
    std::string operator()(const MCPInstallError::Malformed& error) const {
        return fmt::format("{} is not a valid configuration file, so Morvelin left it alone. Fix or delete it and try "
                           "again.",
                           error.file);
    }
    std::string operator()(const MCPInstallError::WriteFailed& error) const {
        return fmt::format("Could not update {}: {}", error.file, error.detail);
    }
};

} // namespace

std::string MCPInstallError::description() const { return std::visit(Describe{}, m_reason); }

} // namespace morvelin
