// What can go wrong with narration takes, and the sentences that a user reads about it.
#pragma once

#include <string>
#include <variant>

#include "core/base/Files.h"

namespace morvelin {

struct NarrationError {
    struct RecordingFailed {
        std::string reason;
    };
    struct EmptyTake {};
    struct NoMicrophone {};
    struct MicrophoneDenied {};
    /// The list is a newer program's or damaged; it is never written over.
    struct LibraryUnreadable {};
    /// A take with a number that JSON cannot hold; the file on disk stays as it was.
    struct NotFinite {};
    using Reason = std::variant<RecordingFailed, EmptyTake, NoMicrophone, MicrophoneDenied, LibraryUnreadable,
                                NotFinite, FileError>;

    Reason reason;

    template <class Case>
    requires std::constructible_from<Reason, Case> NarrationError(Case reason_) : reason(std::move(reason_)) {}

    template <class Case>
    [[nodiscard]] bool is() const {
        return std::holds_alternative<Case>(reason);
    }
    [[nodiscard]] std::string description() const;
};

} // namespace morvelin
