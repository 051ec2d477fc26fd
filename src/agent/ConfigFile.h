// Changes a configuration file that belongs to another program: whole or not at all, with a backup beside it.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "agent/MCPInstallError.h"
#include "core/base/Result.h"

namespace morvelin {

/// Gets the file's content, absent where there is no file, and gives the new one, absent where nothing is to change.
using ConfigEdit =
    std::function<Result<std::optional<std::string>, MCPInstallError>(const std::optional<std::string>& content)>;

/// The file's content, absent where there is no file.
[[nodiscard]] Result<std::optional<std::string>, MCPInstallError> readConfigFile(const std::filesystem::path& file);

/// Reads, edits and replaces the file as one step. The state before is kept as `<name>.morvelin-backup`. A link is
/// followed, the file's permissions are kept, a new file is the user's alone. Edits at the same time wait for one
/// another; when a program that knows nothing of this changes the file meanwhile, the edit is made again. On failure the
/// file is as it was.
Result<void, MCPInstallError> editConfigFile(const std::filesystem::path& file, const ConfigEdit& edit);

} // namespace morvelin
