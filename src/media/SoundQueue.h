// The packets of a movie's track of sound that wait for their place in the file. Owned by the muxer.
#pragma once

#include <cstdint>
#include <deque>

#include "core/base/Time.h"
#include "media/AACEncoder.h"
#include "media/FFmpegHandles.h"

namespace morvelin {

class SoundQueue {
public:
    /// `shift` is added to all times, in samples, on their way into the file.
    SoundQueue(AVStream& stream, std::int64_t shift) : m_stream(&stream), m_shift(shift) {}

    SoundQueue(SoundQueue&&) = default;
    SoundQueue& operator=(SoundQueue&&) = default;

    void add(const EncodedSound& packet);
    [[nodiscard]] std::int64_t shift() const { return m_shift; }
    [[nodiscard]] bool isEmpty() const { return m_packets.empty(); }
    /// Bytes that wait.
    [[nodiscard]] std::int64_t bytes() const { return m_bytes; }
    /// Of the first packet that waits.
    [[nodiscard]] Seconds start() const;
    /// Of all packets that have come, waiting or written.
    [[nodiscard]] Seconds end() const;
    /// Drops what waits and starts at `sample` or later, and shortens what reaches over it.
    void cut(std::int64_t sample);
    /// Hands the packets that start before `time` to the container. FFmpeg's code.
    int write(AVFormatContext& output, Seconds time);

private:
    AVStream* m_stream;
    std::int64_t m_shift = 0;
    std::deque<PacketHandle> m_packets;
    std::int64_t m_bytes = 0;
    std::int64_t m_end = 0;
};

} // namespace morvelin
