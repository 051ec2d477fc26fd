// H.264 by the graphics hardware, through FFmpeg, for takes. Owned by one movie writer.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "media/FFmpegHandles.h"
#include "media/VideoEncoder.h"

namespace morvelin {

/// The names of the encoders that this machine may have, the best first: NVENC, VA-API, Quick Sync. Looks at device nodes
/// only, so that no driver is loaded.
[[nodiscard]] std::vector<std::string> hardwareEncoders();

/// Whether the encoder of that name codes pictures. A driver that is broken may crash or hang in here.
[[nodiscard]] bool canEncode(const std::string& hardwareEncoder);

/// One hardware encoder.
class FFmpegHardwareEncoder final : public VideoEncoder {
public:
    /// Nothing when this machine has no such encoder or it doesn't open with these settings.
    [[nodiscard]] static std::unique_ptr<FFmpegHardwareEncoder> open(const std::string& name,
                                                                     const VideoEncoderSettings& settings);

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
