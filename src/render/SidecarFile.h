// What the files beside an export have in common: their names, and who made them.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace morvelin {

/// "Morvelin 1.2.3 (founder mode)"; an empty version is that of a build without one.
[[nodiscard]] std::string sidecarGenerator(std::string_view applicationVersion);

/// "<stem>.<kind>.json" in the video's folder.
[[nodiscard]] std::filesystem::path sidecarPath(const std::filesystem::path& video, std::string_view kind);

} // namespace morvelin
