// The devices that a person can name on the command line, as text.
#pragma once

#include <string>

#include "platform/AudioInput.h"
#include "platform/Camera.h"

namespace morvelin {

/// A heading and a line for each, or a line that says why there is none.
[[nodiscard]] std::string microphoneChoices(AudioInputSource& source);
[[nodiscard]] std::string cameraChoices(CameraSource& source);

} // namespace morvelin
