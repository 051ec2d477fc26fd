// What the reading tools know of a project: its files as one value, read again only when one of them has changed.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "core/Project.h"
#include "core/Transcript.h"
#include "core/base/Result.h"
#include "narration/NarrationLibrary.h"
#include "storage/FileState.h"
#include "storage/ProjectBundle.h"

namespace morvelin {

/// One project as it stood on disk.
struct ProjectSnapshot {
    Project project;
    ProjectBundle::Contents contents; ///< the edit of all versions but the current one is left out
    std::vector<CursorEvent> presses; ///< of the pointer's track, in its order
    std::optional<FounderSourceTranscript> transcript;
    NarrationLibrary narration;
    bool isCursorDrawn = false; ///< the pointer isn't part of the recorded picture
};

/// Keeps the snapshot of a few projects. A snapshot is used as long as every file that it was made from has the same
/// size, time and identity; so an edit by anybody is seen at once. Confined to the main thread.
class ProjectSnapshots {
public:
    explicit ProjectSnapshots(ProjectBundle::Services services) : m_services(std::move(services)) {}

    Result<std::shared_ptr<const ProjectSnapshot>, ProjectBundle::BundleError> read(
        const std::filesystem::path& bundleURL);

private:
    struct Kept {
        std::vector<FileState> files;
        std::shared_ptr<const ProjectSnapshot> snapshot;
        unsigned long long lastUse = 0;
    };

    static std::vector<FileState> statesOf(const std::filesystem::path& bundleURL);
    void forgetOldest();

    ProjectBundle::Services m_services;
    std::map<std::filesystem::path, Kept> m_kept;
    unsigned long long m_uses = 0;
};

} // namespace morvelin
