#include "narration/NarrationError.h"

namespace morvelin {

namespace {

struct Sentence {
    std::string operator()(const NarrationError::RecordingFailed& failed) const {
        return "The narration could not be recorded: " + failed.reason;
    }
    std::string operator()(const NarrationError::EmptyTake&) const {
        return "Nothing was recorded. Check the microphone and try again.";
    }
    std::string operator()(const NarrationError::NoMicrophone&) const { return "The microphone could not be opened."; }
    std::string operator()(const NarrationError::MicrophoneDenied&) const {
        return "Morvelin is not allowed to use the microphone. Allow it in System Settings → Privacy & Security → "
               "Microphone.";
    }
    std::string operator()(const NarrationError::LibraryUnreadable&) const {
        return "This project’s list of takes was written by a newer Morvelin or is damaged. It is left untouched, so "
               "new takes are not saved. Open the project in the latest Morvelin.";
    }
    std::string operator()(const NarrationError::NotFinite&) const {
        return "The list of takes was not saved: a take has a length that is no number.";
    }
    std::string operator()(const FileError& error) const { return error.description(); }
};

} // namespace

std::string NarrationError::description() const { return std::visit(Sentence{}, reason); }

} // namespace morvelin
