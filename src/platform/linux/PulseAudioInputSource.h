// The operation "audio input" by libpulse, on PulseAudio and on PipeWire. Made once by the program's composition.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "core/base/Date.h"
#include "platform/AudioInput.h"

namespace morvelin {

class PulseConnection;

/// Nothing is connected before the first question.
class PulseAudioInputSource final : public AudioInputSource {
public:
    /// `server` as libpulse names it; empty: the user's own. The clock must outlive all streams.
    explicit PulseAudioInputSource(const WallClock& clock, std::string server = {});
    ~PulseAudioInputSource() override;

    Result<MicrophoneScan, AudioInputError> microphones() override;
    [[nodiscard]] EventLoop::Timer onMicrophonesChanged(EventLoop& loop, std::function<void()> action) override;
    Result<std::unique_ptr<AudioInputStream>, AudioInputError> open(const AudioInputTarget& target,
                                                                    AudioInputListener& listener) override;

private:
    std::shared_ptr<PulseConnection> connection();
    Result<std::shared_ptr<PulseConnection>, AudioInputError> readyConnection();

    const WallClock& m_clock;
    std::string m_server;
    std::mutex m_mutex; ///< guards `m_connection`
    std::shared_ptr<PulseConnection> m_connection;
};

} // namespace morvelin
