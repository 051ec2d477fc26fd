#include "agent/HeadlessEditError.h"

#include <fmt/format.h>

namespace morvelin {

namespace {

struct Describe {
    std::string operator()(const HeadlessEditError::UnknownVersion& error) const {
        return fmt::format("No version “{}”. Call list_versions for the ones on this project.", error.name);
    }
    std::string operator()(const HeadlessEditError::VersionRename& error) const { return error.text; }
    std::string operator()(const HeadlessEditError::VersionDelete& error) const { return error.text; }
    std::string operator()(const HeadlessEditError::NoVersions&) const {
        return "This project has no versions to work with.";
    }
};

} // namespace

std::string HeadlessEditError::description() const { return std::visit(Describe{}, m_reason); }

} // namespace morvelin
