// Opens a movie or a file of sound with FFmpeg's demuxers, also one that was cut off. Used by the readers of both.
#pragma once

#include <filesystem>
#include <string>
#include <utility>

#include "core/base/Result.h"
#include "media/FFmpegHandles.h"

namespace morvelin {

/// The file with its streams known, or a whole sentence that tells why not.
[[nodiscard]] Result<InputHandle, std::string> openInput(const std::filesystem::path& path);

/// From now on only this stream is read.
void readOnly(AVFormatContext& input, int stream);

} // namespace morvelin
