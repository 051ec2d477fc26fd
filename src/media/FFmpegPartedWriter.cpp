#include "media/FFmpegPartedWriter.h"

#include <algorithm>
#include <utility>

#include "media/X264Encoder.h"

namespace morvelin {

namespace {

/// A part's coded frames, kept until its turn comes.
class EncodedPart final : public MoviePart {
public:
    static Result<std::unique_ptr<EncodedPart>, MovieWriterError> begin(const VideoEncoderSettings& settings,
                                                                        const PartBudget& budget) {
        auto rate = std::make_unique<PartRate>(budget);
        std::unique_ptr<EncodedPart> part(new EncodedPart(*rate, settings.timeBase()));
        auto encoder = X264Encoder::create(settings, std::move(rate));
        if (!encoder) return passOn(std::move(encoder));
        part->m_encoder = std::move(*encoder);
        return part;
    }

    Result<void, MovieWriterError> append(const Picture& picture, std::span<const PixelBox> changed) override {
        return m_encoder->encode(picture, m_length++, changed, m_keep);
    }

    Result<void, MovieWriterError> finish() override {
        auto drained = m_encoder->drain(m_keep);
        m_cost = m_rate->cost(Seconds(static_cast<double>(m_length) * m_frameSeconds));
        m_encoder.reset();
        return drained;
    }

    /// Hands over the frames, `start` frames into the movie, and forgets them.
    Result<void, MovieWriterError> moveTo(FFmpegMuxer& muxer, std::int64_t start) {
        for (const Frame& frame : std::exchange(m_frames, {}))
            if (auto written = muxer.write({.bytes = frame.bytes,
                                            .presentationTime = start + frame.presentationTime,
                                            .decodingTime = start + frame.decodingTime,
                                            .isKeyFrame = frame.isKeyFrame});
                !written)
                return written;
        return {};
    }

    [[nodiscard]] const VideoEncoder& encoder() const { return *m_encoder; }
    [[nodiscard]] const PartCost& cost() const { return m_cost; }
    [[nodiscard]] std::int64_t length() const { return m_length; }

private:
    struct Frame {
        std::vector<std::uint8_t> bytes;
        std::int64_t presentationTime = 0;
        std::int64_t decodingTime = 0;
        bool isKeyFrame = false;
    };

    EncodedPart(PartRate& rate, Rational frame) : m_rate(&rate), m_frameSeconds(frame.value()) {}

    PartRate* m_rate; ///< the encoder's
    double m_frameSeconds;
    std::unique_ptr<VideoEncoder> m_encoder; ///< until the part is finished
    std::vector<Frame> m_frames;
    std::int64_t m_length = 0; ///< in frames
    PartCost m_cost;
    PacketSink m_keep = [this](const EncodedPacket& packet) -> Result<void, MovieWriterError> {
        m_frames.push_back({{packet.bytes.begin(), packet.bytes.end()},
                            packet.presentationTime,
                            packet.decodingTime,
                            packet.isKeyFrame});
        return {};
    };
};

} // namespace

Result<std::unique_ptr<FFmpegPartedWriter>, MovieWriterError> FFmpegPartedWriter::create(
    const MovieSettings& settings) {
    const VideoEncoderSettings encoding = VideoEncoderSettings::of(settings, 1);
    // Every part's encoder gives the same parameter sets.
    const auto first = EncodedPart::begin(encoding, partBudget(static_cast<double>(settings.bitRate), {}));
    if (!first) return failure(first.error());
    auto sound = SoundEncoders::create(settings.soundTracks);
    if (!sound) return passOn(std::move(sound));
    std::unique_ptr<FFmpegPartedWriter> writer(new FFmpegPartedWriter(encoding, std::move(*sound)));
    auto muxer = FFmpegMuxer::create(settings.path, settings.container,
                                     {.size = settings.size,
                                      .timeBase = encoding.timeBase(),
                                      .frameRate = settings.frameRate,
                                      .transfer = settings.transfer,
                                      .parameterSets = (*first)->encoder().parameterSets()},
                                     writer->m_sound.formats());
    if (!muxer) return passOn(std::move(muxer));
    writer->m_muxer = std::move(*muxer);
    return writer;
}

Result<std::unique_ptr<MoviePart>, MovieWriterError> FFmpegPartedWriter::begin(std::int64_t index) {
    PartBudget budget;
    {
        // Only what lies so far back is sure to be known, however many parts are encoded at a time.
        const std::scoped_lock guard(m_lock);
        const auto known = static_cast<std::size_t>(std::max<std::int64_t>(0, index - kPartsAhead + 1));
        budget = partBudget(static_cast<double>(m_settings.bitRate), std::span(m_placed).first(known));
    }
    auto part = EncodedPart::begin(m_settings, budget);
    if (!part) return passOn(std::move(part));
    return std::unique_ptr<MoviePart>(std::move(*part));
}

Result<void, MovieWriterError> FFmpegPartedWriter::place(std::unique_ptr<MoviePart> part) {
    auto& encoded = static_cast<EncodedPart&>(*part); // made by `begin`
    if (auto moved = encoded.moveTo(*m_muxer, m_end); !moved) return moved;
    m_end += encoded.length();
    const std::scoped_lock guard(m_lock);
    m_placed.push_back(encoded.cost());
    return {};
}

Result<void, MovieWriterError> FFmpegPartedWriter::appendSound(std::size_t track, std::span<const float> samples) {
    return m_sound.append(track, samples, *m_muxer);
}

Result<void, MovieWriterError> FFmpegPartedWriter::finish() {
    auto drained = m_sound.drain(*m_muxer);
    auto finished = m_muxer->finish(m_end);
    return finished ? drained : finished;
}

} // namespace morvelin
