// A camera by the kernel's own interface (Video4Linux 2). Owned by whoever records it.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/base/OwnedDescriptor.h"
#include "core/base/WakeUp.h"
#include "media/CameraPictures.h"
#include "platform/Camera.h"

struct v4l2_buffer;

namespace morvelin {

/// What a device file says of itself; nothing when it is no camera, or may not be opened.
[[nodiscard]] std::optional<CameraDevice> cameraBehind(const std::filesystem::path& device);

class V4L2Camera final : public CameraStream {
public:
    /// `device` is a file such as "/dev/video0".
    static Result<std::unique_ptr<CameraStream>, CameraError> open(const std::filesystem::path& device,
                                                                   PixelSize preferred);
    ~V4L2Camera() override;
    V4L2Camera(const V4L2Camera&) = delete;
    V4L2Camera& operator=(const V4L2Camera&) = delete;

    Result<bool, CameraError> next(Seconds timeout, const std::function<void(const CameraFrame&)>& take) override;
    void interrupt() override { m_wakeUp.ring(); }

private:
    /// A driver's buffer, seen through memory of ours.
    struct Buffer {
        void* start = nullptr;
        std::size_t length = 0;
    };

    explicit V4L2Camera(OwnedDescriptor device) : m_device(std::move(device)) {}

    bool chooseForm(PixelSize preferred);
    bool startStreaming();
    Result<bool, CameraError> takeNewest(const std::function<void(const CameraFrame&)>& take);
    [[nodiscard]] bool giveBack(v4l2_buffer& buffer) const;
    [[nodiscard]] CameraError failed(const char* what) const;

    OwnedDescriptor m_device;
    WakeUp m_wakeUp;
    CameraPixels m_pixels = CameraPixels::YUYV;
    PixelSize m_size;
    std::ptrdiff_t m_stride = 0;
    std::vector<Buffer> m_buffers;
    CameraPictures m_pictures;
};

} // namespace morvelin
