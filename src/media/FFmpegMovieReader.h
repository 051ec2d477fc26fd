// The operation "read a movie" by FFmpeg's demuxers and decoders. The factory is made once by the program's
// composition; each reader is owned by an export, a preview or a frame reader.
#pragma once

#include <memory>

#include "core/base/Result.h"
#include "platform/MovieReader.h"

namespace morvelin {

/// How the machine is used to read movies.
struct FFmpegMovieReaderOptions {
    int threads = 0; ///< of each decoder; 0: all cores
};

class FFmpegMovieReaderFactory final : public MovieReaderFactory {
public:
    explicit FFmpegMovieReaderFactory(FFmpegMovieReaderOptions options = {}) : m_options(options) {}

    Result<std::unique_ptr<MovieReader>, MovieReaderError> open(const std::filesystem::path& path) override;

private:
    FFmpegMovieReaderOptions m_options;
};

} // namespace morvelin
