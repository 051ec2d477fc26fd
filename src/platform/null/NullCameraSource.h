// No camera: stands in where none can be used.
#pragma once

#include "platform/Camera.h"

namespace morvelin {

class NullCameraSource final : public CameraSource {
public:
    std::vector<CameraDevice> devices() override { return {}; }
    [[nodiscard]] EventLoop::Timer onDevicesChanged(EventLoop&, std::function<void()>) override { return {}; }
    Result<std::unique_ptr<CameraStream>, CameraError> open(const std::string&, PixelSize) override {
        return failure(CameraError{CameraError::Kind::DeviceNotFound, "There is no camera."});
    }
};

} // namespace morvelin
