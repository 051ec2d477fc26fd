// The named operation "camera": which cameras there are, and their pictures. Independent of the screen's stream.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/base/EventLoop.h"
#include "core/base/Result.h"
#include "core/base/Time.h"
#include "platform/Picture.h"

namespace morvelin {

/// Why a camera can't be used, or has stopped; `detail` is a whole sentence of the cause.
struct CameraError {
    enum class Kind { AccessDenied, DeviceNotFound, DeviceFailed };

    Kind kind = Kind::DeviceFailed;
    std::string detail;

    [[nodiscard]] std::string description() const { return detail; }
};

struct CameraDevice {
    std::string id;   ///< stable while the device is there
    std::string name; ///< for people

    bool operator==(const CameraDevice&) const = default;
};

/// A moment that a camera saw.
struct CameraFrame {
    HostTime time;          ///< when the camera took it
    const Picture& picture; ///< 4:2:0, BT.709, limited range; valid during the call
};

/// A camera that runs. On one thread at a time, but for `interrupt`.
class CameraStream {
public:
    virtual ~CameraStream() = default;

    /// Waits for the next frame, at most `timeout`, and hands it over; frames that came meanwhile are skipped but for
    /// the newest. Gives false on a time-out or an interruption.
    virtual Result<bool, CameraError> next(Seconds timeout, const std::function<void(const CameraFrame&)>& take) = 0;
    /// From any thread: ends the `next` that waits, or else the next one that would.
    virtual void interrupt() = 0;
};

/// The machine's cameras.
class CameraSource {
public:
    virtual ~CameraSource() = default;

    /// From any thread; takes some tens of milliseconds.
    virtual std::vector<CameraDevice> devices() = 0;
    /// Calls `action` on the loop's thread when cameras came or went. On that thread.
    [[nodiscard]] virtual EventLoop::Timer onDevicesChanged(EventLoop& loop, std::function<void()> action) = 0;
    /// Opens a camera by its id, an empty one for the first, at a size near `preferred`. From any thread; may take a
    /// second.
    virtual Result<std::unique_ptr<CameraStream>, CameraError> open(const std::string& deviceID,
                                                                    PixelSize preferred) = 0;
};

} // namespace morvelin
