// Turns samples into AAC packets. Owned by whoever writes a movie's track of sound.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "core/base/Result.h"
#include "media/FFmpegHandles.h"
#include "platform/MovieWriter.h"

namespace morvelin {

/// One coded stretch of sound. The bytes stay valid until the encoder is used again.
struct EncodedSound {
    std::span<const std::uint8_t> bytes;
    /// In samples. The first packet lies before 0: a decoder needs it for what follows, and nobody hears it.
    std::int64_t presentationTime = 0;
    std::int64_t duration = 0; ///< in samples; of the last packet, how much of it is sound
};

/// Takes the coded sound as it comes.
using SoundSink = std::function<Result<void, MovieWriterError>(const EncodedSound&)>;

class AACEncoder {
public:
    static Result<std::unique_ptr<AACEncoder>, MovieWriterError> create(const SoundTrackSettings& settings);

    /// What a decoder must know beforehand (AudioSpecificConfig).
    [[nodiscard]] std::span<const std::uint8_t> configuration() const;
    [[nodiscard]] std::int64_t bitRate() const { return m_bitRate; }
    /// Samples in a packet.
    [[nodiscard]] int packetLength() const;
    /// By how many samples the first packet lies before 0.
    [[nodiscard]] int priming() const;

    /// Interleaved samples, which go on where the last ones ended. What is no number, or beyond full scale, is limited.
    Result<void, MovieWriterError> encode(std::span<const float> samples, const SoundSink& sink);
    /// Hands over what is still inside; nothing can be encoded afterwards.
    Result<void, MovieWriterError> drain(const SoundSink& sink);

private:
    AACEncoder(CodecHandle codec, FrameHandle frame, std::int64_t bitRate);
    Result<void, MovieWriterError> send(AVFrame* frame, const SoundSink& sink);

    CodecHandle m_codec;
    FrameHandle m_frame; ///< samples that do not fill a packet yet
    PacketHandle m_packet = newPacket();
    std::int64_t m_bitRate = 0;
    int m_filled = 0;              ///< samples in `m_frame`
    std::int64_t m_sentLength = 0; ///< samples handed to the codec
};

} // namespace morvelin
