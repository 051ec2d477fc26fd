#include "media/SoundQueue.h"

#include <algorithm>
#include <new>

extern "C" {
#include <libavformat/avformat.h>
}

namespace morvelin {

namespace {

Seconds lengthOf(std::int64_t samples) { return Seconds(static_cast<double>(samples) / kSoundRate); }

} // namespace

void SoundQueue::add(const EncodedSound& coded) {
    PacketHandle packet = newPacket();
    if (av_new_packet(packet.get(), static_cast<int>(coded.bytes.size())) < 0) throw std::bad_alloc();
    std::ranges::copy(coded.bytes, packet->data);
    packet->pts = packet->dts = coded.presentationTime;
    packet->duration = coded.duration;
    packet->flags |= AV_PKT_FLAG_KEY;
    packet->stream_index = m_stream->index;
    m_bytes += packet->size;
    m_end = coded.presentationTime + coded.duration;
    m_packets.push_back(std::move(packet));
}

Seconds SoundQueue::start() const { return lengthOf(m_packets.empty() ? m_end : m_packets.front()->pts); }
Seconds SoundQueue::end() const { return lengthOf(m_end); }

void SoundQueue::cut(std::int64_t sample) {
    while (!m_packets.empty() && m_packets.back()->pts >= sample) {
        m_bytes -= m_packets.back()->size;
        m_packets.pop_back();
    }
    if (m_packets.empty()) return;
    AVPacket& last = *m_packets.back();
    last.duration = std::min(last.duration, sample - last.pts);
    m_end = last.pts + last.duration;
}

int SoundQueue::write(AVFormatContext& output, Seconds time) {
    while (!m_packets.empty() && start() < time) {
        const PacketHandle packet = std::move(m_packets.front());
        m_packets.pop_front();
        m_bytes -= packet->size;
        packet->pts = packet->dts += m_shift;
        av_packet_rescale_ts(packet.get(), {1, kSoundRate}, m_stream->time_base);
        if (const int code = av_write_frame(&output, packet.get()); code < 0) return code;
    }
    return 0;
}

} // namespace morvelin
