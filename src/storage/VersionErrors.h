// What a user may not do with a project's versions, and the sentences that say so.
#pragma once

#include <string>
#include <variant>

namespace morvelin {

/// Why a version doesn't get a name.
struct RenameError {
    struct DuplicateName {
        std::string name;
    };
    struct EmptyName {};
    struct InitialVersionIsLocked {};
    std::variant<DuplicateName, EmptyName, InitialVersionIsLocked> reason;

    [[nodiscard]] std::string description() const;
};

/// Why a version stays.
struct DeleteError {
    enum class Reason { NotFound, InitialVersionIsLocked, IsCurrent };
    Reason reason = Reason::NotFound;

    [[nodiscard]] std::string description() const;
};

/// Why a project keeps its name.
struct ProjectRenameError {
    std::string keptName;
    std::string reason; ///< a sentence

    [[nodiscard]] std::string description() const;
};

} // namespace morvelin
