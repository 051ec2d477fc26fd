// A stream of sound from the sound server: a microphone, or the monitor of what is played. Owned by whoever records.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "core/base/Date.h"
#include "platform/AudioInput.h"
#include "platform/linux/PulseConnection.h"

struct pa_operation;
struct pa_stream;

namespace morvelin {

/// Asks the server again which device is meant whenever devices change or the server comes back, and goes over to it.
class PulseInputStream final : public AudioInputStream, private PulseConnection::Observer {
public:
    static Result<std::unique_ptr<AudioInputStream>, AudioInputError> open(std::shared_ptr<PulseConnection> connection,
                                                                           AudioInputTarget target,
                                                                           AudioInputListener& listener,
                                                                           const WallClock& clock);
    ~PulseInputStream() override;
    PulseInputStream(const PulseInputStream&) = delete;
    PulseInputStream& operator=(const PulseInputStream&) = delete;

    void reopen() override;

private:
    PulseInputStream(std::shared_ptr<PulseConnection> connection, AudioInputTarget target, AudioInputListener& listener,
                     const WallClock& clock);

    /// When a frame of the stream was heard, as the server last said.
    struct Mark {
        HostTime time;
        std::int64_t frame = 0;
        HostTime askedAt;
    };

    void serverCame() override { findDevice(); }
    void serverWent() override;
    void devicesChanged() override { findDevice(); }

    void findDevice();
    template <class DeviceRecord>
    static void answer(const DeviceRecord* device, int end, void* self);
    void foundDevice();
    void start();
    void drop();
    void streamChanged();
    void ended();
    void refused();
    void read();
    void askTime();
    void timeTold();
    void lose(AudioInputError reason);
    void returned();
    [[nodiscard]] AudioInputError missing() const;

    std::shared_ptr<PulseConnection> m_connection;
    AudioInputTarget m_target;
    AudioInputListener& m_listener;
    const WallClock& m_clock;

    // All under the connection's lock.
    pa_operation* m_question = nullptr; ///< which device is meant
    bool m_mustAskAgain = false;
    std::optional<std::string> m_answer;
    std::string m_device; ///< of the stream
    pa_stream* m_stream = nullptr;
    bool m_isRunning = false;
    bool m_hasGap = false;
    std::int64_t m_framesRead = 0; ///< since the stream began
    pa_operation* m_timeQuestion = nullptr;
    std::optional<Mark> m_mark;
    std::optional<AudioInputError> m_loss; ///< why there is no sound
    bool m_isOpen = false;                 ///< from then on the listener is told
    std::optional<PulseConnection::Timer> m_retry;
};

} // namespace morvelin
