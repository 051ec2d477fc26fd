// A whole folder copied with all below it, sharing the disk's blocks where the file system can.
#pragma once

#include <filesystem>
#include <stop_token>

#include "core/base/Files.h"
#include "core/base/Result.h"

namespace morvelin {

/// Copies files, folders and links into a new folder, each file synced. Fails where `to` exists, and with ECANCELED once
/// a stop is asked for; what was copied until then stays.
Result<void, FileError> copyFolder(const std::filesystem::path& from, const std::filesystem::path& to,
                                   std::stop_token stop);

} // namespace morvelin
