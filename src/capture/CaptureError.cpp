#include "capture/CaptureError.h"

#include <utility>

namespace morvelin {

std::string CaptureError::description() const {
    using enum Kind;
    switch (kind) {
    case OutputDirectoryCreationFailed: return "Could not create output directory: " + detail;
    case AssetWriterSetupFailed: return "Could not configure video writer: " + detail;
    case AssetWriterFailed: return "Video writer failed while finalizing output: " + detail;
    case AlreadyRecording: return "A recording session is already running.";
    case NotRecording: return "No active recording session was found.";
    case DisplayNotFound: return "No capturable display was found.";
    case WindowNotFound: return "No target window was selected for capture.";
    case InvalidCropRect: return "Selected area is invalid for the chosen display.";
    case StopInProgress: return "The recording is already being stopped.";
    case ScreenUnavailable:
    case SoundUnavailable:
    case Interrupted: return detail;
    }
    std::unreachable();
}

} // namespace morvelin
