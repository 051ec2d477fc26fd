#include "render/ScreenCaptureError.h"

#include <fmt/format.h>

namespace morvelin {

namespace {

struct Describe {
    std::string operator()(const ScreenCaptureError::DisplayNotFound& error) const {
        return error.id ? fmt::format("Display {} is not connected.", *error.id) : "No display available to capture.";
    }
    std::string operator()(const ScreenCaptureError::CaptureFailed& error) const {
        return "Could not capture the screen: " + error.reason;
    }
    std::string operator()(const ScreenCaptureError::PermissionDenied&) const {
        return "Morvelin needs Screen Recording permission to capture the screen. Grant it in System Settings › "
               "Privacy & Security › Screen & System Audio Recording, then relaunch Morvelin: macOS only applies the "
               "change to a fresh launch. Note that the permission is granted per copy of the app: a build run from "
               "Xcode needs its own grant, separate from one in /Applications.";
    }
    std::string operator()(const ScreenCaptureError::EncodingFailed&) const {
        return "Could not encode the screenshot.";
    }
};

} // namespace

std::string ScreenCaptureError::description() const { return std::visit(Describe{}, m_reason); }

} // namespace morvelin
