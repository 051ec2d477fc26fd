// The sound of a movie being written: an encoder for each track, in front of the muxer. Owned by one movie writer, or by
// the end of an export whose parts were encoded on their own.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "core/base/Result.h"
#include "media/AACEncoder.h"
#include "media/FFmpegMuxer.h"
#include "platform/MovieWriter.h"

namespace morvelin {

class SoundEncoders {
public:
    static Result<SoundEncoders, MovieWriterError> create(std::span<const SoundTrackSettings> tracks);

    /// For the muxer that is going to take the packets. They point into the encoders.
    [[nodiscard]] std::vector<SoundTrackFormat> formats() const;
    /// Interleaved samples, which go on where the track's last ones ended.
    Result<void, MovieWriterError> append(std::size_t track, std::span<const float> samples, FFmpegMuxer& muxer);
    /// Hands the muxer what is still inside.
    Result<void, MovieWriterError> drain(FFmpegMuxer& muxer);

private:
    std::vector<std::unique_ptr<AACEncoder>> m_encoders;
};

} // namespace morvelin
