#include "app/ProjectChoice.h"

#include <fmt/format.h>

namespace morvelin {

namespace fs = std::filesystem;

namespace {

constexpr const char* kExtension = ".morvelin";

std::optional<fs::path> lastChanged(const fs::path& folder) {
    std::optional<fs::path> best;
    fs::file_time_type bestTime;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        if (entry.path().extension() != kExtension || !entry.is_directory(error)) continue;
        const auto time = entry.last_write_time(error);
        if (error || (best && time <= bestTime)) continue;
        best = entry.path();
        bestTime = time;
    }
    return best;
}

} // namespace

Result<fs::path, std::string> chooseProject(const std::optional<fs::path>& wanted, const fs::path& projectsFolder) {
    if (!wanted) {
        if (auto last = lastChanged(projectsFolder)) return std::move(*last);
        return failure(std::string("There are no recordings in your Projects folder yet."));
    }
    fs::path named = projectsFolder / *wanted;
    if (named.extension() != kExtension) named += kExtension;
    std::error_code error;
    for (const fs::path& candidate : {*wanted, named})
        if (fs::is_directory(candidate, error)) return fs::absolute(candidate).lexically_normal();
    return failure(fmt::format("There is no project at {}.", wanted->string()));
}

} // namespace morvelin
