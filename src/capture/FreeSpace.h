// How much room a disk has; passed in where it is asked for, so that tests can fill a disk without one.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>

namespace morvelin {

/// Bytes that this user may still write in a folder; nothing where the system doesn't tell.
using FreeSpace = std::function<std::optional<std::int64_t>(const std::filesystem::path& folder)>;

/// The system's own answer.
[[nodiscard]] inline std::optional<std::int64_t> freeSpaceOfDisk(const std::filesystem::path& folder) {
    std::error_code error;
    const auto space = std::filesystem::space(folder, error);
    if (error) return std::nullopt;
    return static_cast<std::int64_t>(space.available);
}

} // namespace morvelin
