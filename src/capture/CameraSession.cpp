#include "capture/CameraSession.h"

#include <pthread.h>

namespace morvelin {

namespace {

/// Names of threads end after 15 characters: what is left of "com.morvelin.camera.samples".
constexpr const char* kThreadName = "com.morvelin.ca";
constexpr PixelSize kPreferredSize{1920, 1080};
constexpr Seconds kLongestTurn{0.5};

} // namespace

Result<std::unique_ptr<CameraSession>, CameraError> CameraSession::open(const Services& services,
                                                                        const std::string& deviceID,
                                                                        Listener listener) {
    auto stream = services.cameras.open(deviceID, kPreferredSize);
    if (!stream) return passOn(std::move(stream));
    return std::unique_ptr<CameraSession>(new CameraSession(services, std::move(*stream), std::move(listener)));
}

CameraSession::CameraSession(Services services, std::unique_ptr<CameraStream> stream, Listener listener)
    : m_services(std::move(services)),
      m_listener(std::move(listener)),
      m_stream(std::move(stream)),
      m_thread([this] { run(); }) {}

CameraSession::~CameraSession() {
    post([this] { m_isOver = true; });
    m_thread.join();
}

void CameraSession::post(std::function<void()> order) {
    {
        const std::lock_guard lock(m_mutex);
        m_orders.push_back(std::move(order));
    }
    m_hasOrders.notify_one();
    m_stream->interrupt();
}

void CameraSession::record(std::filesystem::path url) {
    post([this, url = std::move(url)] {
        m_track.emplace(url, m_services.writers, m_services.log);
        m_hasBegun = false;
    });
}

void CameraSession::pause(HostTime now) {
    post([this, now] {
        if (m_track) m_track->pause(now);
    });
}

void CameraSession::resume(HostTime now) {
    post([this, now] {
        if (m_track) m_track->resume(now);
    });
}

std::future<std::optional<CameraRecording>> CameraSession::finish(HostTime end) {
    auto promise = std::make_shared<std::promise<std::optional<CameraRecording>>>();
    auto finished = promise->get_future();
    post([this, end, promise] {
        promise->set_value(m_track ? m_track->finish(end) : std::nullopt);
        m_track.reset();
    });
    return finished;
}

// ------------------------------------------------------------------------------------------- the camera's thread

void CameraSession::run() {
    pthread_setname_np(pthread_self(), kThreadName);
    for (obey(); !m_isOver; obey()) m_isLost ? rest() : watch();
    // What nobody waits for any more is completed as far as it came.
    if (m_track) (void)m_track->finish(HostTime());
}

void CameraSession::obey() {
    std::vector<std::function<void()>> orders;
    {
        const std::lock_guard lock(m_mutex);
        orders.swap(m_orders);
    }
    for (const auto& order : orders) order();
}

void CameraSession::watch() {
    const auto came = m_stream->next(kLongestTurn, [this](const CameraFrame& frame) {
        if (m_track) m_track->take(frame);
    });
    if (m_track && m_track->sessionStartTime() && !std::exchange(m_hasBegun, true))
        m_listener.began(*m_track->sessionStartTime());
    if (came) return;
    m_isLost = true;
    m_listener.lost(came.error());
}

void CameraSession::rest() {
    std::unique_lock lock(m_mutex);
    m_hasOrders.wait(lock, [this] { return !m_orders.empty(); });
}

} // namespace morvelin
