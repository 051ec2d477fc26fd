// A camera that shows a test pattern: for machines without one, where whoever works on the program asks for it.
#pragma once

#include "platform/Camera.h"

namespace morvelin {

/// One camera, "test-pattern", of any size: a bar wanders over grey once in 4 s, and the middle flashes for the first
/// tenth of each second of the machine's monotonic clock, so that a recording shows when it was made.
class PatternCameraSource final : public CameraSource {
public:
    static constexpr const char* kID = "test-pattern";
    static constexpr double kFrameRate = 30;

    explicit PatternCameraSource(PixelSize size = {640, 480}) : m_size(size) {}

    std::vector<CameraDevice> devices() override { return {{kID, "Test pattern, no camera"}}; }
    [[nodiscard]] EventLoop::Timer onDevicesChanged(EventLoop&, std::function<void()>) override { return {}; }
    Result<std::unique_ptr<CameraStream>, CameraError> open(const std::string& deviceID, PixelSize preferred) override;

private:
    PixelSize m_size;
};

} // namespace morvelin
