// H.264 by libx264's own API, which alone takes a map of the blocks that did not change. Owned by one movie writer.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "media/TakeRate.h"
#include "media/VideoEncoder.h"

struct x264_t;

namespace morvelin {

/// One libx264 encoder. In real time each frame leaves in the call that brought it, frames come at any times, and a key
/// frame is made when the last one lies `keyFrameInterval` back; offline the same pictures give the same bytes, for one
/// number of threads.
class X264Encoder final : public VideoEncoder {
public:
    static Result<std::unique_ptr<X264Encoder>, MovieWriterError> create(const VideoEncoderSettings& settings);

    [[nodiscard]] std::span<const std::uint8_t> parameterSets() const override { return m_parameterSets; }
    Result<void, MovieWriterError> encode(const Picture& picture, std::int64_t time, std::span<const PixelBox> changed,
                                          const PacketSink& sink) override;
    Result<void, MovieWriterError> drain(const PacketSink& sink) override;

private:
    struct Close {
        void operator()(x264_t* encoder) const;
    };

    explicit X264Encoder(const VideoEncoderSettings& settings);
    Result<void, MovieWriterError> open();
    Result<void, MovieWriterError> takeParameterSets();
    [[nodiscard]] bool isRealTime() const { return m_settings.pace == MovieSettings::Pace::RealTime; }
    [[nodiscard]] bool keyFrameIsDue(std::int64_t time) const;
    Result<void, MovieWriterError> handOver(const EncodedPacket& packet, const PacketSink& sink);
    [[nodiscard]] MovieWriterError complaint(MovieWriterError::Kind kind, const char* sentence) const;

    VideoEncoderSettings m_settings;
    /// libx264 tells what went wrong only to its log, which keeps this string's address.
    std::unique_ptr<std::string> m_lastComplaint;
    std::unique_ptr<x264_t, Close> m_encoder;
    std::vector<std::uint8_t> m_parameterSets;
    TakeRate m_takeRate; ///< real time only; offline the encoder's own rate control sees to the bit rate
    std::int64_t m_keyFrameTicks = 0;
    std::int64_t m_lastKeyFrame = 0;
    bool m_isFirst = true;
};

} // namespace morvelin
