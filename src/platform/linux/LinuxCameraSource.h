// The operation "camera" on Linux: the kernel's video devices. Made once by the program's composition.
#pragma once

#include "platform/Camera.h"

namespace morvelin {

class LinuxCameraSource final : public CameraSource {
public:
    std::vector<CameraDevice> devices() override;
    [[nodiscard]] EventLoop::Timer onDevicesChanged(EventLoop& loop, std::function<void()> action) override;
    Result<std::unique_ptr<CameraStream>, CameraError> open(const std::string& deviceID, PixelSize preferred) override;
};

} // namespace morvelin
