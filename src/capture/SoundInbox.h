// Carries a stream's sound from the sound server's thread to the capture thread. Owned by a sound recorder.
#pragma once

#include <condition_variable>
#include <mutex>
#include <variant>
#include <vector>

#include "platform/AudioInput.h"

namespace morvelin {

/// Neither thread waits for the other. Keeps half a minute at most; sound beyond that is a gap.
class SoundInbox final : public AudioInputListener {
public:
    struct Chunk {
        HostTime time;
        std::vector<float> samples;
        bool followsGap = false;
    };
    struct Lost {
        AudioInputError reason;
    };
    struct Returned {};
    using Message = std::variant<Chunk, Lost, Returned>;

    void soundCame(const SoundChunk& chunk) override;
    void soundLost(const AudioInputError& reason) override { put(Lost{reason}); }
    void soundReturned() override { put(Returned{}); }

    /// All that came since the last call, in order.
    [[nodiscard]] std::vector<Message> take();
    /// Waits until something is there to take.
    void wait(Seconds limit);

private:
    void put(Message message);

    std::mutex m_mutex; ///< guards the rest
    std::condition_variable m_hasMessages;
    std::vector<Message> m_messages;
    std::size_t m_waitingSamples = 0;
    bool m_hasGap = false;
};

} // namespace morvelin
