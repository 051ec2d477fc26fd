// One MP4 put together from parts that are encoded side by side. Owned by one export.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "media/FFmpegMuxer.h"
#include "media/PartRate.h"
#include "media/SoundEncoders.h"
#include "media/VideoEncoder.h"
#include "platform/MovieParts.h"

namespace morvelin {

class FFmpegPartedWriter final : public PartedMovieWriter {
public:
    static Result<std::unique_ptr<FFmpegPartedWriter>, MovieWriterError> create(const MovieSettings& settings);

    Result<std::unique_ptr<MoviePart>, MovieWriterError> begin(std::int64_t index) override;
    Result<void, MovieWriterError> place(std::unique_ptr<MoviePart> part) override;
    Result<void, MovieWriterError> appendSound(std::size_t track, std::span<const float> samples) override;
    Result<void, MovieWriterError> finish() override;

private:
    FFmpegPartedWriter(const VideoEncoderSettings& settings, SoundEncoders sound)
        : m_settings(settings),
          m_sound(std::move(sound)) {}

    VideoEncoderSettings m_settings;
    SoundEncoders m_sound;
    std::unique_ptr<FFmpegMuxer> m_muxer;
    std::int64_t m_end = 0; ///< of what is placed, in frames

    std::mutex m_lock;              ///< guards `m_placed`: parts are begun on other threads than they are placed on
    std::vector<PartCost> m_placed; ///< what the parts in the file came to
};

} // namespace morvelin
