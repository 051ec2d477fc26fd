// Why a pointer or keyboard tool could not do what it was asked, in the words that an agent reads.
#pragma once

#include <string>
#include <variant>

#include "platform/InputPosting.h"

namespace morvelin {

class InputError {
public:
    struct UnknownKey {
        std::string name;
    };
    struct UnknownModifier {
        std::string name;
    };
    struct UnknownButton {
        std::string name;
    };
    struct NoSpace {
        std::string reason;
    };
    struct AccessibilityDenied {};
    struct PostEventDenied {};
    struct EventCreationFailed {};
    /// The desktop offers no way to post events.
    struct PostingUnavailable {
        std::string detail;
    };
    using Reason = std::variant<UnknownKey, UnknownModifier, UnknownButton, NoSpace, AccessibilityDenied,
                                PostEventDenied, EventCreationFailed, PostingUnavailable>;

    InputError(Reason reason) : m_reason(std::move(reason)) {}
    InputError(InputPostingError error);

    [[nodiscard]] std::string description() const;

private:
    Reason m_reason;
};

} // namespace morvelin
