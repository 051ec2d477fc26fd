#include "media/SoundEncoders.h"

#include <utility>

namespace morvelin {

namespace {

SoundSink toTrack(FFmpegMuxer& muxer, std::size_t track) {
    return [&muxer, track](const EncodedSound& packet) { return muxer.writeSound(track, packet); };
}

} // namespace

Result<SoundEncoders, MovieWriterError> SoundEncoders::create(std::span<const SoundTrackSettings> tracks) {
    SoundEncoders encoders;
    for (const SoundTrackSettings& settings : tracks) {
        auto encoder = AACEncoder::create(settings);
        if (!encoder) return passOn(std::move(encoder));
        encoders.m_encoders.push_back(std::move(*encoder));
    }
    return encoders;
}

std::vector<SoundTrackFormat> SoundEncoders::formats() const {
    std::vector<SoundTrackFormat> formats;
    for (const auto& encoder : m_encoders)
        formats.push_back({encoder->configuration(), encoder->bitRate(), encoder->packetLength(), encoder->priming()});
    return formats;
}

Result<void, MovieWriterError> SoundEncoders::append(std::size_t track, std::span<const float> samples,
                                                     FFmpegMuxer& muxer) {
    return m_encoders.at(track)->encode(samples, toTrack(muxer, track));
}

Result<void, MovieWriterError> SoundEncoders::drain(FFmpegMuxer& muxer) {
    for (std::size_t track = 0; track < m_encoders.size(); ++track)
        if (auto drained = m_encoders[track]->drain(toTrack(muxer, track)); !drained) return drained;
    return {};
}

} // namespace morvelin
