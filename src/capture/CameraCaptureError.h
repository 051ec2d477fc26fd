// Why a camera could not be recorded, with the words that a user reads.
#pragma once

#include <string>

#include "platform/Camera.h"

namespace morvelin {

struct CameraCaptureError {
    enum class Kind { SessionSetupFailed, AccessDenied, DeviceNotFound, NotRunning, AlreadyRecording };

    Kind kind = Kind::SessionSetupFailed;
    std::string detail;

    [[nodiscard]] static CameraCaptureError of(const CameraError& error);
    [[nodiscard]] std::string description() const;
};

} // namespace morvelin
