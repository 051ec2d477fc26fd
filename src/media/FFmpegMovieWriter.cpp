#include "media/FFmpegMovieWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <utility>

#include <fmt/core.h>

#include "media/FFmpegHandles.h"
#include "media/FFmpegHardwareEncoder.h"
#include "media/FFmpegMuxer.h"
#include "media/FFmpegPartedWriter.h"
#include "media/PartRate.h"
#include "media/SoundEncoders.h"
#include "media/TakeRate.h"
#include "media/VideoEncoder.h"
#include "media/X264Encoder.h"

namespace morvelin {

namespace {

class FFmpegMovieWriter final : public MovieWriter {
public:
    FFmpegMovieWriter(std::unique_ptr<VideoEncoder> encoder, SoundEncoders sound, std::unique_ptr<FFmpegMuxer> muxer,
                      Rational timeBase)
        : m_encoder(std::move(encoder)),
          m_sound(std::move(sound)),
          m_muxer(std::move(muxer)),
          m_timeBase(timeBase),
          m_toMuxer([this](const EncodedPacket& packet) { return m_muxer->write(packet); }) {}

    Result<void, MovieWriterError> append(const Picture& picture, Seconds time,
                                          std::span<const PixelBox> changed) override {
        // Two frames within one tick stay two frames.
        m_lastTime = std::max(ticks(time), m_lastTime + 1);
        return m_encoder->encode(picture, m_lastTime, changed, m_toMuxer);
    }

    Result<void, MovieWriterError> appendSound(std::size_t track, std::span<const float> samples) override {
        return m_sound.append(track, samples, *m_muxer);
    }

    Result<void, MovieWriterError> flush() override { return m_muxer->flushFragment(); }

    Result<void, MovieWriterError> finish(Seconds end) override {
        // What the muxer has to say matters more than a frame that is still in the encoder.
        auto drained = m_encoder->drain(m_toMuxer);
        if (drained) drained = m_sound.drain(*m_muxer);
        auto finished = m_muxer->finish(std::max(ticks(end), m_lastTime + 1));
        return finished ? drained : finished;
    }

    [[nodiscard]] std::int64_t bytesWritten() const override { return m_muxer->bytesWritten(); }

private:
    [[nodiscard]] std::int64_t ticks(Seconds time) const { return std::llround(time.value / m_timeBase.value()); }

    std::unique_ptr<VideoEncoder> m_encoder;
    SoundEncoders m_sound;
    std::unique_ptr<FFmpegMuxer> m_muxer;
    Rational m_timeBase;
    PacketSink m_toMuxer;
    std::int64_t m_lastTime = -1;
};

std::unique_ptr<RateControl> rateControl(const VideoEncoderSettings& settings) {
    if (settings.pace == MovieSettings::Pace::RealTime) return std::make_unique<TakeRate>(settings.bitRate);
    return std::make_unique<PartRate>(partBudget(static_cast<double>(settings.bitRate), {}));
}

Result<std::unique_ptr<VideoEncoder>, MovieWriterError> openEncoder(const VideoEncoderSettings& settings,
                                                                    const std::string& hardwareEncoder) {
    if (!hardwareEncoder.empty() && settings.pace == MovieSettings::Pace::RealTime)
        if (auto encoder = FFmpegHardwareEncoder::open(hardwareEncoder, settings))
            return std::unique_ptr<VideoEncoder>(std::move(encoder));
    auto encoder = X264Encoder::create(settings, rateControl(settings));
    if (!encoder) return passOn(std::move(encoder));
    return std::unique_ptr<VideoEncoder>(std::move(*encoder));
}

Result<void, MovieWriterError> checkThatItCanBeEncoded(const MovieSettings& settings) {
    const PixelSize size = settings.size;
    if (size.width >= 2 && size.height >= 2 && size.width % 2 == 0 && size.height % 2 == 0 && settings.frameRate > 0 &&
        settings.bitRate > 0 && settings.keyFrameInterval > Seconds(0))
        return {};
    return failure(
        MovieWriterError{MovieWriterError::Kind::NoEncoder,
                         fmt::format("A movie of {} × {} at {} frames and {} bits a second can't be encoded.",
                                     size.width, size.height, settings.frameRate, settings.bitRate),
                         0});
}

} // namespace

Result<std::unique_ptr<MovieWriter>, MovieWriterError> FFmpegMovieWriterFactory::create(const MovieSettings& settings) {
    if (auto fits = checkThatItCanBeEncoded(settings); !fits) return passOn(std::move(fits));
    keepFFmpegQuiet();
    const VideoEncoderSettings encoding = VideoEncoderSettings::of(settings, m_options.threads);
    auto encoder = openEncoder(encoding, m_options.hardwareEncoder);
    if (!encoder) return passOn(std::move(encoder));
    auto sound = SoundEncoders::create(settings.soundTracks);
    if (!sound) return passOn(std::move(sound));
    auto muxer = FFmpegMuxer::create(settings.path, settings.container,
                                     {.size = settings.size,
                                      .timeBase = encoding.timeBase(),
                                      .frameRate = settings.frameRate,
                                      .transfer = settings.transfer,
                                      .parameterSets = (*encoder)->parameterSets()},
                                     sound->formats());
    if (!muxer) return passOn(std::move(muxer));
    return std::make_unique<FFmpegMovieWriter>(std::move(*encoder), std::move(*sound), std::move(*muxer),
                                               encoding.timeBase());
}

Result<std::unique_ptr<PartedMovieWriter>, MovieWriterError> FFmpegMovieWriterFactory::createParted(
    const MovieSettings& settings) {
    if (auto fits = checkThatItCanBeEncoded(settings); !fits) return passOn(std::move(fits));
    keepFFmpegQuiet();
    auto writer = FFmpegPartedWriter::create(settings);
    if (!writer) return passOn(std::move(writer));
    return std::unique_ptr<PartedMovieWriter>(std::move(*writer));
}

} // namespace morvelin
