#include "capture/SoundInbox.h"

#include <chrono>
#include <utility>

namespace morvelin {

namespace {

constexpr std::size_t kMostSamples = 30 * kSoundRate * kSoundChannels;

} // namespace

void SoundInbox::soundCame(const SoundChunk& chunk) {
    std::vector<float> samples(chunk.samples.begin(), chunk.samples.end());
    {
        const std::lock_guard lock(m_mutex);
        if (m_waitingSamples + samples.size() > kMostSamples) {
            m_hasGap = true;
            return;
        }
        m_waitingSamples += samples.size();
        m_messages.emplace_back(
            Chunk{chunk.time, std::move(samples), std::exchange(m_hasGap, false) || chunk.followsGap});
    }
    m_hasMessages.notify_one();
}

void SoundInbox::put(Message message) {
    {
        const std::lock_guard lock(m_mutex);
        m_messages.push_back(std::move(message));
    }
    m_hasMessages.notify_one();
}

std::vector<SoundInbox::Message> SoundInbox::take() {
    const std::lock_guard lock(m_mutex);
    m_waitingSamples = 0;
    return std::exchange(m_messages, {});
}

void SoundInbox::wait(Seconds limit) {
    std::unique_lock lock(m_mutex);
    m_hasMessages.wait_for(lock, std::chrono::duration<double>(limit.value), [this] { return !m_messages.empty(); });
}

} // namespace morvelin
