// The operations "write a movie" and "write a movie in parts" by libx264 or a hardware encoder, and FFmpeg's containers. Made once by the program's
// composition; each movie writer is owned by its take or export.
#pragma once

#include <memory>
#include <string>

#include "core/base/Result.h"
#include "platform/MovieParts.h"
#include "platform/MovieWriter.h"

namespace morvelin {

/// How the machine is used to write movies.
struct FFmpegMovieWriterOptions {
    /// One of `hardwareEncoders`; empty, or where it doesn't open: software. For takes only: an export shall give the same
    /// bytes everywhere.
    std::string hardwareEncoder{};
    int threads = 0; ///< of each encoder; 0: as many as suit the machine
};

class FFmpegMovieWriterFactory final : public MovieWriterFactory, public PartedMovieWriterFactory {
public:
    explicit FFmpegMovieWriterFactory(FFmpegMovieWriterOptions options = {}) : m_options(options) {}

    Result<std::unique_ptr<MovieWriter>, MovieWriterError> create(const MovieSettings& settings) override;
    Result<std::unique_ptr<PartedMovieWriter>, MovieWriterError> createParted(const MovieSettings& settings) override;

private:
    FFmpegMovieWriterOptions m_options;
};

} // namespace morvelin
