#include "capture/CameraCaptureError.h"

#include <utility>

namespace morvelin {

CameraCaptureError CameraCaptureError::of(const CameraError& error) {
    switch (error.kind) {
    case CameraError::Kind::AccessDenied: return {Kind::AccessDenied, error.detail};
    case CameraError::Kind::DeviceNotFound: return {Kind::DeviceNotFound, error.detail};
    case CameraError::Kind::DeviceFailed: return {Kind::SessionSetupFailed, error.detail};
    }
    std::unreachable();
}

std::string CameraCaptureError::description() const {
    switch (kind) {
    case Kind::SessionSetupFailed: return "Could not start the camera: " + detail;
    case Kind::AccessDenied: return detail;
    case Kind::DeviceNotFound: return "The selected camera is no longer connected.";
    case Kind::NotRunning: return "The camera session is not running.";
    case Kind::AlreadyRecording: return "The camera is already recording.";
    }
    std::unreachable();
}

} // namespace morvelin
