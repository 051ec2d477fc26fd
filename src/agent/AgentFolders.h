// Where agent tools find the user's projects and exports. Made by the application from the home folder.
#pragma once

#include <filesystem>

#include "storage/ProjectsFolder.h"

namespace morvelin {

struct AgentFolders {
    std::filesystem::path home;
    ProjectsFolder projects;
    std::filesystem::path exports;

    [[nodiscard]] static AgentFolders below(const std::filesystem::path& home) {
        const std::filesystem::path movies = home / "Movies" / "Morvelin";
        return {home, ProjectsFolder(movies / "Projects"), movies / "Exports"};
    }
};

} // namespace morvelin
