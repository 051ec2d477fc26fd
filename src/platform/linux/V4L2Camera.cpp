#include "platform/linux/V4L2Camera.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/videodev2.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>

namespace morvelin {

namespace {

constexpr std::uint32_t kBuffers = 4;
constexpr double kLeastFrameRate = 24;

struct Form {
    std::uint32_t code;
    CameraPixels pixels;
};
/// The cheapest to use first.
constexpr std::array kForms{
    Form{V4L2_PIX_FMT_NV12, CameraPixels::NV12},        Form{V4L2_PIX_FMT_YUV420, CameraPixels::I420},
    Form{V4L2_PIX_FMT_YUYV, CameraPixels::YUYV},        Form{V4L2_PIX_FMT_UYVY, CameraPixels::UYVY},
    Form{V4L2_PIX_FMT_MJPEG, CameraPixels::MotionJPEG}, Form{V4L2_PIX_FMT_JPEG, CameraPixels::MotionJPEG},
    Form{V4L2_PIX_FMT_RGB24, CameraPixels::RGB},        Form{V4L2_PIX_FMT_BGR24, CameraPixels::BGR}};

/// What a driver is asked; true when it did it.
template <class Record>
bool ask(const OwnedDescriptor& device, unsigned long question, Record& record) {
    int result = 0;
    do result = ::ioctl(device.get(), question, &record);
    while (result != 0 && errno == EINTR);
    return result == 0;
}

std::vector<PixelSize> sizesOf(const OwnedDescriptor& device, std::uint32_t code) {
    std::vector<PixelSize> sizes;
    v4l2_frmsizeenum size{};
    size.pixel_format = code;
    for (; ask(device, VIDIOC_ENUM_FRAMESIZES, size); ++size.index) {
        if (size.type != V4L2_FRMSIZE_TYPE_DISCRETE) {
            // Any size from a step to the next: the largest stands for all, and the driver finds the one asked for.
            sizes.push_back({static_cast<int>(size.stepwise.max_width), static_cast<int>(size.stepwise.max_height)});
            break;
        }
        sizes.push_back({static_cast<int>(size.discrete.width), static_cast<int>(size.discrete.height)});
    }
    return sizes;
}

/// Frames a second at best; 0 where the driver doesn't tell.
double rateOf(const OwnedDescriptor& device, std::uint32_t code, PixelSize size) {
    double best = 0;
    v4l2_frmivalenum interval{};
    interval.pixel_format = code;
    interval.width = static_cast<std::uint32_t>(size.width);
    interval.height = static_cast<std::uint32_t>(size.height);
    for (; ask(device, VIDIOC_ENUM_FRAMEINTERVALS, interval); ++interval.index) {
        const v4l2_fract& length = interval.type == V4L2_FRMIVAL_TYPE_DISCRETE ? interval.discrete
                                                                               : interval.stepwise.min;
        if (length.numerator > 0) best = std::max(best, static_cast<double>(length.denominator) / length.numerator);
        if (interval.type != V4L2_FRMIVAL_TYPE_DISCRETE) break;
    }
    return best;
}

/// How far a size is from the one preferred; a smaller one is as far as a much larger one.
double distance(PixelSize size, PixelSize preferred) {
    const auto area = [](PixelSize of) { return static_cast<double>(of.width) * of.height; };
    return std::abs(std::log(area(size) / area(preferred)));
}

CameraError accessError(const std::filesystem::path& device, int code) {
    if (code == EACCES || code == EPERM)
        return {CameraError::Kind::AccessDenied,
                fmt::format("The camera {} may not be opened. Add yourself to the group “video”.", device.string())};
    if (code == EBUSY)
        return {CameraError::Kind::DeviceFailed, fmt::format("The camera {} is in use.", device.string())};
    return {CameraError::Kind::DeviceNotFound, fmt::format("There is no camera {}.", device.string())};
}

bool isCamera(const v4l2_capability& says) {
    const auto can = (says.capabilities & V4L2_CAP_DEVICE_CAPS) != 0 ? says.device_caps : says.capabilities;
    return (can & V4L2_CAP_VIDEO_CAPTURE) != 0 && (can & V4L2_CAP_STREAMING) != 0;
}

HostTime momentOf(const timeval& time) {
    return HostTime(static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6);
}

} // namespace

std::optional<CameraDevice> cameraBehind(const std::filesystem::path& device) {
    const OwnedDescriptor file(::open(device.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    v4l2_capability says{};
    if (!file.isOpen() || !ask(file, VIDIOC_QUERYCAP, says) || !isCamera(says)) return std::nullopt;
    const auto* name = reinterpret_cast<const char*>(says.card);
    return CameraDevice{device.string(), std::string(name, strnlen(name, sizeof says.card))};
}

Result<std::unique_ptr<CameraStream>, CameraError> V4L2Camera::open(const std::filesystem::path& device,
                                                                    PixelSize preferred) {
    OwnedDescriptor file(::open(device.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    if (!file.isOpen()) return failure(accessError(device, errno));
    v4l2_capability says{};
    if (!ask(file, VIDIOC_QUERYCAP, says) || !isCamera(says)) return failure(accessError(device, ENODEV));
    std::unique_ptr<V4L2Camera> camera(new V4L2Camera(std::move(file)));
    if (!camera->chooseForm(preferred))
        return failure(errno == EBUSY ? accessError(device, EBUSY)
                                      : CameraError{CameraError::Kind::DeviceFailed,
                                                    fmt::format("The camera {} gives no pictures of a form that can be "
                                                                "read.",
                                                                device.string())});
    if (!camera->startStreaming())
        return failure(errno == EBUSY ? accessError(device, EBUSY) : camera->failed("does not start"));
    return camera;
}

/// The size nearest to the one preferred that comes fast enough, in the cheapest form that has it.
bool V4L2Camera::chooseForm(PixelSize preferred) {
    struct Choice {
        Form form{};
        PixelSize size;
        bool isFast = false;
    };
    std::optional<Choice> best;
    const auto isBetter = [&](const Choice& a, const Choice& b) {
        if (a.isFast != b.isFast) return a.isFast;
        return distance(a.size, preferred) < distance(b.size, preferred) - 1e-9;
    };
    for (const Form& form : kForms)
        for (const PixelSize size : sizesOf(m_device, form.code)) {
            const double rate = rateOf(m_device, form.code, size);
            const Choice choice{form, size, rate == 0 || rate >= kLeastFrameRate};
            if (size.width > 0 && size.height > 0 && (!best || isBetter(choice, *best))) best = choice;
        }
    if (!best) return false;

    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    format.fmt.pix.pixelformat = best->form.code;
    format.fmt.pix.width = static_cast<std::uint32_t>(std::min(best->size.width, preferred.width * 2));
    format.fmt.pix.height = static_cast<std::uint32_t>(std::min(best->size.height, preferred.height * 2));
    format.fmt.pix.field = V4L2_FIELD_NONE;
    if (!ask(m_device, VIDIOC_S_FMT, format) || format.fmt.pix.pixelformat != best->form.code) return false;
    m_pixels = best->form.pixels;
    m_size = {static_cast<int>(format.fmt.pix.width), static_cast<int>(format.fmt.pix.height)};
    m_stride = m_pixels == CameraPixels::MotionJPEG ? 0 : static_cast<std::ptrdiff_t>(format.fmt.pix.bytesperline);

    v4l2_streamparm pace{};
    pace.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    pace.parm.capture.timeperframe = {1, 30};
    (void)ask(m_device, VIDIOC_S_PARM, pace); // not every driver lets it be chosen
    return true;
}

bool V4L2Camera::startStreaming() {
    v4l2_requestbuffers wanted{};
    wanted.count = kBuffers;
    wanted.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    wanted.memory = V4L2_MEMORY_MMAP;
    if (!ask(m_device, VIDIOC_REQBUFS, wanted) || wanted.count < 2) return false;
    for (std::uint32_t index = 0; index < wanted.count; ++index) {
        v4l2_buffer buffer{};
        buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        buffer.memory = V4L2_MEMORY_MMAP;
        buffer.index = index;
        if (!ask(m_device, VIDIOC_QUERYBUF, buffer)) return false;
        void* start = ::mmap(nullptr, buffer.length, PROT_READ, MAP_SHARED, m_device.get(),
                             static_cast<off_t>(buffer.m.offset));
        if (start == MAP_FAILED) return false;
        m_buffers.push_back({start, buffer.length});
        if (!giveBack(buffer)) return false;
    }
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    return ask(m_device, VIDIOC_STREAMON, type);
}

V4L2Camera::~V4L2Camera() {
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    (void)ask(m_device, VIDIOC_STREAMOFF, type);
    for (const Buffer& buffer : m_buffers) ::munmap(buffer.start, buffer.length);
}

bool V4L2Camera::giveBack(v4l2_buffer& buffer) const { return ask(m_device, VIDIOC_QBUF, buffer); }

CameraError V4L2Camera::failed(const char* what) const {
    if (errno == ENODEV) return {CameraError::Kind::DeviceNotFound, "The camera has been disconnected."};
    return {CameraError::Kind::DeviceFailed, fmt::format("The camera {}: {}.", what, std::strerror(errno))};
}

Result<bool, CameraError> V4L2Camera::next(Seconds timeout, const std::function<void(const CameraFrame&)>& take) {
    std::array<pollfd, 2> watched{{{m_wakeUp.descriptor().get(), POLLIN, 0}, {m_device.get(), POLLIN, 0}}};
    if (::poll(watched.data(), watched.size(), static_cast<int>(timeout.value * 1000)) <= 0) return false;
    if (watched[0].revents != 0) {
        m_wakeUp.clear();
        return false;
    }
    return takeNewest(take);
}

/// Frames that waited are given back unseen: a camera shows what is now.
Result<bool, CameraError> V4L2Camera::takeNewest(const std::function<void(const CameraFrame&)>& take) {
    std::optional<v4l2_buffer> newest;
    for (;;) {
        v4l2_buffer buffer{};
        buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        buffer.memory = V4L2_MEMORY_MMAP;
        if (!ask(m_device, VIDIOC_DQBUF, buffer)) {
            if (errno == EAGAIN) break;
            return failure(failed("gives no pictures"));
        }
        if (newest && !giveBack(*newest)) return failure(failed("gives no pictures"));
        newest = buffer;
    }
    if (!newest) return false;

    const bool isWhole = (newest->flags & V4L2_BUF_FLAG_ERROR) == 0 && newest->index < m_buffers.size();
    std::shared_ptr<const Picture> picture;
    if (isWhole) {
        const auto* start = static_cast<const std::uint8_t*>(m_buffers[newest->index].start);
        const std::size_t used = std::min<std::size_t>(newest->bytesused, m_buffers[newest->index].length);
        picture = m_pictures.picture({{start, used}, m_pixels, m_size, m_stride});
    }
    // Drivers stamp frames by the monotonic clock; the few that don't are stamped as they come.
    timespec clock{};
    clock_gettime(CLOCK_MONOTONIC, &clock);
    const HostTime now(static_cast<double>(clock.tv_sec) + static_cast<double>(clock.tv_nsec) * 1e-9);
    const bool isStamped = (newest->flags & V4L2_BUF_FLAG_TIMESTAMP_MASK) == V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
    if (picture) take({isStamped ? std::min(momentOf(newest->timestamp), now) : now, *picture});
    picture.reset();
    if (!giveBack(*newest)) return failure(failed("gives no pictures"));
    return isWhole;
}

} // namespace morvelin
