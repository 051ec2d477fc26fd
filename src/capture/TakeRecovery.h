// Takes that a crash or a kill has left behind become projects. Used at the start of the program and by its own command.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "capture/TakeFolder.h"
#include "core/base/Log.h"
#include "core/base/Time.h"
#include "platform/MovieReader.h"
#include "storage/ProjectBundle.h"

namespace morvelin {

/// What became of one unfinished take.
struct RecoveredTake {
    enum class Outcome {
        BecameProject,
        HeldNothing, ///< it ended before its first picture was on disk; its folder is gone
        Failed       ///< its folder stays as it is
    };

    Outcome outcome = Outcome::Failed;
    std::string name;
    std::filesystem::path place; ///< of the project, or else of the take's folder
    Seconds duration;
    std::string reason; ///< why it failed, a whole sentence

    /// One line for a person.
    [[nodiscard]] std::string description() const;
};

/// Makes projects of all takes beside `projectsFolder`'s projects that no running program works on, up to their last
/// second. Blocks for as long as that takes.
std::vector<RecoveredTake> recoverTakes(const std::filesystem::path& projectsFolder, MovieReaderFactory& readers,
                                        const ProjectBundle::Services& services);

} // namespace morvelin
