// The operation "read sound" by FFmpeg's demuxers, decoders and resampler. The factory is made once by the program's
// composition; each reader is owned by an export or a preview.
#pragma once

#include <memory>
#include <utility>

#include "core/base/Log.h"
#include "core/base/Result.h"
#include "platform/SoundReader.h"

namespace morvelin {

class FFmpegSoundReaderFactory final : public SoundReaderFactory {
public:
    /// The log, where there is one, hears of damaged sound, once a reader.
    explicit FFmpegSoundReaderFactory(Log log) : m_log(std::move(log)) {}

    Result<std::unique_ptr<SoundReader>, SoundReaderError> open(const std::filesystem::path& path,
                                                                std::size_t track) override;

private:
    Log m_log;
};

} // namespace morvelin
