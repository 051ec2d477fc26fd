// No sound: stands in where no sound server can be used, and says why.
#pragma once

#include "platform/AudioInput.h"

namespace morvelin {

class NullAudioInputSource final : public AudioInputSource {
public:
    /// `reason` is why there is no sound; every question is answered with it.
    explicit NullAudioInputSource(AudioInputError reason) : m_reason(std::move(reason)) {}

    Result<MicrophoneScan, AudioInputError> microphones() override { return failure(m_reason); }
    [[nodiscard]] EventLoop::Timer onMicrophonesChanged(EventLoop&, std::function<void()>) override { return {}; }
    Result<std::unique_ptr<AudioInputStream>, AudioInputError> open(const AudioInputTarget&,
                                                                    AudioInputListener&) override {
        return failure(m_reason);
    }

private:
    AudioInputError m_reason;
};

} // namespace morvelin
