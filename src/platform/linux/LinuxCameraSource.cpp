#include "platform/linux/LinuxCameraSource.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <string_view>

#include "platform/linux/V4L2Camera.h"

namespace morvelin {

namespace {

namespace fs = std::filesystem;

constexpr Seconds kLookInterval{1};
constexpr std::string_view kDeviceName = "video";

/// The video device files that are there, by number.
std::vector<fs::path> videoDevices() {
    std::vector<std::pair<int, fs::path>> found;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator("/dev", ignored)) {
        const std::string name = entry.path().filename().string();
        int number = 0;
        if (!name.starts_with(kDeviceName)) continue;
        const auto [end, error] = std::from_chars(name.data() + kDeviceName.size(), name.data() + name.size(), number);
        if (error == std::errc() && end == name.data() + name.size()) found.emplace_back(number, entry.path());
    }
    std::ranges::sort(found);
    std::vector<fs::path> devices;
    for (auto& [number, path] : found) devices.push_back(std::move(path));
    return devices;
}

} // namespace

std::vector<CameraDevice> LinuxCameraSource::devices() {
    std::vector<CameraDevice> cameras;
    for (const fs::path& device : videoDevices())
        if (auto camera = cameraBehind(device)) cameras.push_back(std::move(*camera));
    return cameras;
}

EventLoop::Timer LinuxCameraSource::onDevicesChanged(EventLoop& loop, std::function<void()> action) {
    return loop.every(kLookInterval, [known = videoDevices(), action = std::move(action)]() mutable {
        if (auto now = videoDevices(); now != known) {
            known = std::move(now);
            action();
        }
    });
}

Result<std::unique_ptr<CameraStream>, CameraError> LinuxCameraSource::open(const std::string& deviceID,
                                                                           PixelSize preferred) {
    if (!deviceID.empty()) return V4L2Camera::open(deviceID, preferred);
    const auto cameras = devices();
    if (cameras.empty()) return failure(CameraError{CameraError::Kind::DeviceNotFound, "No camera is connected."});
    return V4L2Camera::open(cameras.front().id, preferred);
}

} // namespace morvelin
