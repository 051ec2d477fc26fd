// H.264 by the graphics hardware, through FFmpeg, for takes. Owned by one movie writer.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "media/FFmpegHandles.h"
#include "media/VideoEncoder.h"

namespace morvelin {

/// One hardware encoder: NVENC, VA-API or Quick Sync, the first that opens.
class FFmpegHardwareEncoder final : public VideoEncoder {
public:
    /// Nothing when this machine has no such encoder or none opens with these settings. Looks at device nodes first, so
    /// that a machine without hardware loads no driver.
    [[nodiscard]] static std::unique_ptr<FFmpegHardwareEncoder> open(const VideoEncoderSettings& settings);

    [[nodiscard]] std::span<const std::uint8_t> parameterSets() const override;
    Result<void, MovieWriterError> encode(const Picture& picture, std::int64_t time, std::span<const PixelBox> changed,
                                          const PacketSink& sink) override;
    Result<void, MovieWriterError> drain(const PacketSink& sink) override;

private:
    FFmpegHardwareEncoder(CodecHandle codec, BufferHandle frames, const VideoEncoderSettings& settings);
    [[nodiscard]] FrameHandle frameFrom(const Picture& picture) const;
    Result<void, MovieWriterError> send(const FrameHandle& frame, const PacketSink& sink);

    CodecHandle m_codec;
    BufferHandle m_deviceFrames; ///< frames on the device; none when the encoder uploads by itself
    PixelSize m_size;
    std::int64_t m_keyFrameTicks = 0;
    std::int64_t m_lastKeyFrame = 0;
    bool m_isFirst = true;
    PacketHandle m_packet;
};

} // namespace morvelin
