#include "platform/null/PatternCameraSource.h"

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>

#include <fmt/format.h>

#include "core/base/Date.h"

namespace morvelin {

namespace {

constexpr Seconds kInterval{1 / PatternCameraSource::kFrameRate};
constexpr Seconds kFlash{0.1};
constexpr Seconds kWander{4};
constexpr std::uint8_t kGrey = 90;
constexpr std::uint8_t kBar = 50;
constexpr std::uint8_t kWhite = 235;
constexpr std::uint8_t kNoColour = 128;

void fill(PlaneView<std::uint8_t> plane, const PixelBox& box, std::uint8_t value) {
    for (int y = box.y; y < box.bottom(); ++y) std::fill_n(plane.row(y) + box.x, box.width, value);
}

void draw(HostTime time, Picture& picture) {
    const PixelSize size = picture.size();
    fill(picture.plane(0), {0, 0, size.width, size.height}, kGrey);
    const double place = time.value / kWander.value;
    const int bar = static_cast<int>((place - std::floor(place)) * (size.width - size.width / 16));
    fill(picture.plane(0), {bar, 0, size.width / 16, size.height}, kBar);
    if (time.value - std::floor(time.value) < kFlash.value)
        fill(picture.plane(0), {size.width / 4, size.height / 4, size.width / 2, size.height / 2}, kWhite);
}

class PatternCamera final : public CameraStream {
public:
    explicit PatternCamera(PixelSize size) : m_picture(size, Subsampling::Quarter) {
        for (const int plane : {1, 2}) fill(m_picture.plane(plane), {0, 0, size.width / 2, size.height / 2}, kNoColour);
    }

    Result<bool, CameraError> next(Seconds timeout, const std::function<void(const CameraFrame&)>& take) override {
        const HostTime now = m_clock.uptime();
        const HostTime due = HostTime(std::ceil(now.sinceZero() / kInterval) * kInterval.value);
        {
            std::unique_lock lock(m_mutex);
            const Seconds wait = std::min(due - now, timeout);
            m_interruptions.wait_for(lock, std::chrono::duration<double>(wait.value),
                                     [this] { return m_isInterrupted; });
            if (std::exchange(m_isInterrupted, false) || due - now > timeout) return false;
        }
        draw(due, m_picture);
        take({due, m_picture});
        return true;
    }
    void interrupt() override {
        {
            const std::lock_guard lock(m_mutex);
            m_isInterrupted = true;
        }
        m_interruptions.notify_one();
    }

private:
    SystemClock m_clock;
    Picture m_picture;
    std::mutex m_mutex; ///< guards `m_isInterrupted`
    std::condition_variable m_interruptions;
    bool m_isInterrupted = false;
};

} // namespace

Result<std::unique_ptr<CameraStream>, CameraError> PatternCameraSource::open(const std::string& deviceID, PixelSize) {
    if (deviceID.empty() || deviceID == kID) return std::make_unique<PatternCamera>(m_size);
    return failure(CameraError{CameraError::Kind::DeviceNotFound, fmt::format("There is no camera {}.", deviceID)});
}

} // namespace morvelin
