// H.264 by libx264's own API, which alone takes a map of the blocks that did not change. Owned by one movie writer, or by
// one part of an export.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "media/RateControl.h"
#include "media/RepeatedFrames.h"
#include "media/VideoEncoder.h"

struct x264_t;
struct x264_nal_t;

namespace morvelin {

/// One libx264 encoder. Each frame leaves in the call that brought it. A key frame is made when the last one lies
/// `keyFrameInterval` back. In real time frames come at any times, and several threads share each; offline one thread
/// works, the same pictures give the same bytes, and a frame that changes nothing costs nothing.
class X264Encoder final : public VideoEncoder {
public:
    /// `rate` is asked for each frame that is coded.
    static Result<std::unique_ptr<X264Encoder>, MovieWriterError> create(const VideoEncoderSettings& settings,
                                                                         std::unique_ptr<RateControl> rate);

    [[nodiscard]] std::span<const std::uint8_t> parameterSets() const override { return m_parameterSets; }
    Result<void, MovieWriterError> encode(const Picture& picture, std::int64_t time, std::span<const PixelBox> changed,
                                          const PacketSink& sink) override;
    Result<void, MovieWriterError> drain(const PacketSink& /*sink*/) override { return {}; }

private:
    struct Close {
        void operator()(x264_t* encoder) const;
    };

    X264Encoder(const VideoEncoderSettings& settings, std::unique_ptr<RateControl> rate);
    Result<void, MovieWriterError> open();
    Result<void, MovieWriterError> takeParameterSets();
    [[nodiscard]] bool keyFrameIsDue(std::int64_t time) const;
    [[nodiscard]] std::span<const std::uint8_t> frameOf(std::span<const x264_nal_t> units, bool isKeyFrame);
    [[nodiscard]] MovieWriterError complaint(MovieWriterError::Kind kind, const char* sentence) const;

    VideoEncoderSettings m_settings;
    std::unique_ptr<RateControl> m_rate;
    /// libx264 tells what went wrong only to its log, which keeps this string's address.
    std::unique_ptr<std::string> m_lastComplaint;
    std::unique_ptr<x264_t, Close> m_encoder;
    std::vector<std::uint8_t> m_parameterSets;
    std::optional<RepeatedFrames> m_repeats; ///< offline
    std::vector<std::uint8_t> m_frame;       ///< the one handed over last
    std::int64_t m_keyFrameTicks = 0;
    std::optional<std::int64_t> m_lastKeyFrame;
    std::int64_t m_codedFrames = 0;
};

} // namespace morvelin
