#include "agent/InputError.h"

#include <fmt/format.h>

namespace morvelin {

namespace {

struct Describe {
    std::string operator()(const InputError::UnknownKey& error) const {
        return fmt::format("Unknown key “{}”. Use a character, or a name like return, tab, escape or f5.", error.name);
    }
    std::string operator()(const InputError::UnknownModifier& error) const {
        return fmt::format("Unknown modifier “{}”. Use cmd, shift, alt or ctrl.", error.name);
    }
    std::string operator()(const InputError::UnknownButton& error) const {
        return fmt::format("Unknown mouse button “{}”. Use left, right or middle.", error.name);
    }
    std::string operator()(const InputError::NoSpace& error) const { return "Nowhere to aim: " + error.reason; }
    std::string operator()(const InputError::AccessibilityDenied&) const {
        return "Morvelin needs Accessibility permission to move the pointer or type. Grant it in System Settings › "
               "Privacy & Security › Accessibility, then try again. Morvelin's onboarding has a button that opens the "
               "right pane.";
    }
    std::string operator()(const InputError::PostEventDenied&) const {
        return "macOS is refusing the pointer and keyboard events Morvelin posts, even though             "
               "Accessibility shows as granted. The grant went stale, which happens after the             "
               "app is updated or rebuilt. In System Settings › Privacy & Security ›             "
               "Accessibility, switch Morvelin off and on again (or remove it and re-add it),             "
               "then try again.";
    }
    std::string operator()(const InputError::EventCreationFailed&) const {
        return "The system refused to create the input event.";
    }
    std::string operator()(const InputError::PostingUnavailable& error) const { return error.detail; }
};

InputError::Reason reasonOf(InputPostingError error) {
    switch (error.kind) {
    case InputPostingError::Kind::NotTrusted: return InputError::AccessibilityDenied{};
    case InputPostingError::Kind::Refused: return InputError::PostEventDenied{};
    case InputPostingError::Kind::Failed: return InputError::EventCreationFailed{};
    case InputPostingError::Kind::Unavailable: break;
    }
    return InputError::PostingUnavailable{std::move(error.detail)};
}

} // namespace

InputError::InputError(InputPostingError error) : m_reason(reasonOf(std::move(error))) {}

std::string InputError::description() const { return std::visit(Describe{}, m_reason); }

} // namespace morvelin
