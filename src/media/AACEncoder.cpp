#include "media/AACEncoder.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include <fmt/core.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

namespace morvelin {

namespace {

MovieWriterError noEncoder(int code) {
    return {MovieWriterError::Kind::NoEncoder, fmt::format("The sound can't be encoded: {}.", ffmpegReason(code)), 0};
}

/// The codec refuses what is no number, and with it all that comes later.
float limited(float sample) { return std::isfinite(sample) ? std::clamp(sample, -1.0F, 1.0F) : 0.0F; }

} // namespace

AACEncoder::AACEncoder(CodecHandle codec, FrameHandle frame, std::int64_t bitRate)
    : m_codec(std::move(codec)),
      m_frame(std::move(frame)),
      m_bitRate(bitRate) {}

Result<std::unique_ptr<AACEncoder>, MovieWriterError> AACEncoder::create(const SoundTrackSettings& settings) {
    const AVCodec* encoder = avcodec_find_encoder_by_name("aac");
    if (encoder == nullptr) return failure(noEncoder(AVERROR_ENCODER_NOT_FOUND));
    CodecHandle codec(avcodec_alloc_context3(encoder));
    if (codec == nullptr) throw std::bad_alloc();
    codec->sample_fmt = AV_SAMPLE_FMT_FLTP;
    codec->sample_rate = kSoundRate;
    codec->time_base = {1, kSoundRate};
    codec->bit_rate = settings.bitRate;
    codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
    av_channel_layout_default(&codec->ch_layout, kSoundChannels);
    // At our rate closer to the sound than the codec's own choice: speech by 13 dB, tones, which that one roughens, by 30.
    av_opt_set(codec->priv_data, "aac_coder", "fast", 0);
    if (const int code = avcodec_open2(codec.get(), encoder, nullptr); code < 0) return failure(noEncoder(code));

    FrameHandle frame = newFrame();
    frame->format = codec->sample_fmt;
    frame->sample_rate = codec->sample_rate;
    frame->nb_samples = codec->frame_size;
    av_channel_layout_default(&frame->ch_layout, kSoundChannels);
    if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
    return std::unique_ptr<AACEncoder>(new AACEncoder(std::move(codec), std::move(frame), settings.bitRate));
}

std::span<const std::uint8_t> AACEncoder::configuration() const {
    return {m_codec->extradata, static_cast<std::size_t>(m_codec->extradata_size)};
}

int AACEncoder::packetLength() const { return m_codec->frame_size; }
int AACEncoder::priming() const { return m_codec->initial_padding; }

Result<void, MovieWriterError> AACEncoder::encode(std::span<const float> samples, const SoundSink& sink) {
    while (samples.size() >= kSoundChannels) {
        if (m_filled == 0 && av_frame_make_writable(m_frame.get()) < 0) throw std::bad_alloc();
        const std::size_t room = static_cast<std::size_t>(packetLength() - m_filled);
        const std::size_t count = std::min(samples.size() / kSoundChannels, room);
        for (int channel = 0; channel < kSoundChannels; ++channel) {
            auto* plane = reinterpret_cast<float*>(m_frame->extended_data[channel]) + m_filled;
            for (std::size_t i = 0; i < count; ++i)
                plane[i] = limited(samples[i * kSoundChannels + static_cast<std::size_t>(channel)]);
        }
        samples = samples.subspan(count * kSoundChannels);
        m_filled += static_cast<int>(count);
        if (m_filled == packetLength())
            if (auto sent = send(m_frame.get(), sink); !sent) return sent;
    }
    return {};
}

Result<void, MovieWriterError> AACEncoder::drain(const SoundSink& sink) {
    if (m_filled > 0) {
        m_frame->nb_samples = m_filled;
        if (auto sent = send(m_frame.get(), sink); !sent) return sent;
    }
    return m_sentLength > 0 ? send(nullptr, sink) : Result<void, MovieWriterError>();
}

Result<void, MovieWriterError> AACEncoder::send(AVFrame* frame, const SoundSink& sink) {
    const auto failed = [](int code) {
        return failure(MovieWriterError{MovieWriterError::Kind::EncodingFailed,
                                        fmt::format("The sound could not be encoded: {}.", ffmpegReason(code)), 0});
    };
    if (frame != nullptr) {
        frame->pts = m_sentLength;
        m_sentLength += frame->nb_samples;
        m_filled = 0;
    }
    if (const int code = avcodec_send_frame(m_codec.get(), frame); code < 0) return failed(code);
    while (true) {
        const int code = avcodec_receive_packet(m_codec.get(), m_packet.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return {};
        if (code < 0) return failed(code);
        auto taken = sink(
            {{m_packet->data, static_cast<std::size_t>(m_packet->size)}, m_packet->pts, m_packet->duration});
        av_packet_unref(m_packet.get());
        if (!taken) return taken;
    }
}

} // namespace morvelin
