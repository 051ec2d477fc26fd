// A camera that runs: its pictures, and a movie of them while one is recorded, on a thread of their own. Owned by a
// `CameraCaptureEngine`.
#pragma once

#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "capture/CameraTrack.h"

namespace morvelin {

class CameraSession {
public:
    struct Services {
        CameraSource& cameras;
        MovieWriterFactory& writers;
        Log log;
    };
    /// Called on the camera's thread.
    struct Listener {
        /// The camera has gone; what was recorded up to then is kept.
        std::function<void(const CameraError&)> lost;
        /// A movie has its first frame, which was seen then, on the take's line without pauses.
        std::function<void(HostTime)> began;
    };

    /// Opens the camera. May take a second; any thread.
    static Result<std::unique_ptr<CameraSession>, CameraError> open(const Services& services,
                                                                    const std::string& deviceID, Listener listener);
    /// Completes the movie if one is recorded.
    ~CameraSession();
    CameraSession(const CameraSession&) = delete;
    CameraSession& operator=(const CameraSession&) = delete;

    // In the order in which they are called; none waits.
    void record(std::filesystem::path url);
    void pause(HostTime now);
    void resume(HostTime now);
    /// Gives the finished movie, or nothing where it has no picture.
    std::future<std::optional<CameraRecording>> finish(HostTime end);

private:
    CameraSession(Services services, std::unique_ptr<CameraStream> stream, Listener listener);

    void post(std::function<void()> order);
    void run();
    void obey();
    void watch();
    void rest();

    Services m_services;
    Listener m_listener;

    // The camera thread's.
    std::unique_ptr<CameraStream> m_stream;
    std::optional<CameraTrack> m_track;
    bool m_hasBegun = false; ///< the track
    bool m_isLost = false;
    bool m_isOver = false;

    std::mutex m_mutex; ///< guards `m_orders`
    std::condition_variable m_hasOrders;
    std::vector<std::function<void()>> m_orders;
    std::thread m_thread;
};

} // namespace morvelin
