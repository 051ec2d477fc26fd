#include "storage/VersionErrors.h"

#include <fmt/format.h>

namespace morvelin {

namespace {

struct Sentence {
    std::string operator()(const RenameError::DuplicateName& taken) const {
        return fmt::format("A version named “{}” already exists in this project.", taken.name);
    }
    std::string operator()(const RenameError::EmptyName&) const { return "A version needs a name."; }
    std::string operator()(const RenameError::InitialVersionIsLocked&) const {
        return "The original version can’t be renamed.";
    }
};

} // namespace

std::string RenameError::description() const { return std::visit(Sentence{}, reason); }

std::string DeleteError::description() const {
    switch (reason) {
    case Reason::NotFound: return "There is no such version in this project.";
    case Reason::InitialVersionIsLocked: return "The original version can’t be deleted.";
    case Reason::IsCurrent: return "The version being edited can’t be deleted. Switch to another one first.";
    }
    return {};
}

std::string ProjectRenameError::description() const {
    return fmt::format("The project keeps the name “{}”. {}", keptName, reason);
}

} // namespace morvelin
