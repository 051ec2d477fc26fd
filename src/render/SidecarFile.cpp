#include "render/SidecarFile.h"

#include <fmt/format.h>

namespace morvelin {

std::string sidecarGenerator(std::string_view applicationVersion) {
    return fmt::format("Morvelin {} (founder mode)", applicationVersion.empty() ? "dev" : applicationVersion);
}

std::filesystem::path sidecarPath(const std::filesystem::path& video, std::string_view kind) {
    std::filesystem::path path = video;
    return path.replace_extension(fmt::format("{}.json", kind));
}

} // namespace morvelin
