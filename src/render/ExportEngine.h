// Renders a project's current version to a video file, with its sidecars beside it. Owned by whoever wants an export;
// one call is one export.
#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>

#include "core/base/Date.h"
#include "core/base/Identity.h"
#include "core/base/Log.h"
#include "core/base/Result.h"
#include "platform/MovieParts.h"
#include "platform/MovieReader.h"
#include "platform/SoundReader.h"
#include "render/ExportActivity.h"
#include "render/ExportError.h"
#include "render/ExportSettings.h"
#include "storage/ProjectBundle.h"

namespace morvelin {

enum class ExportPurpose {
    Viewing,
    ForAI ///< for a model to read: its own size and rates, and the recording without background, padding and zoom
};

enum class SidecarChoice { Written, None };

struct ExportRequest {
    ExportFormat format = ExportFormat::MP4;
    VideoQuality quality = VideoQuality::High;
    ExportPurpose purpose = ExportPurpose::Viewing; ///< `ForAI` overrides format and quality
    std::optional<std::filesystem::path> output;    ///< absent: a name of its own in the exports folder
};

struct ExportProgress {
    std::int64_t frame = 0; ///< frames that are done
    std::int64_t frameCount = 0;
    double limit = 1; ///< what a file that is not whole yet may reach

    [[nodiscard]] double fraction() const {
        return frameCount > 0 ? std::min(limit, static_cast<double>(frame) / static_cast<double>(frameCount)) : 0;
    }
};

/// The files that an export made.
struct ExportedFiles {
    std::filesystem::path video;
    std::optional<std::filesystem::path> events;
    std::optional<std::filesystem::path> transcript; ///< absent too where nothing is said
};

class ExportEngine {
public:
    /// What an export needs of the world. All of it must outlive the engine; an id is taken when the engine is made.
    struct Services {
        MovieReaderFactory& readers;
        SoundReaderFactory& soundReaders;
        PartedMovieWriterFactory& writers;
        ExportActivity& activity;
        IdSource& ids;
        const WallClock& clock;
        Log log;
        std::filesystem::path home;
        std::string applicationVersion; ///< for the sidecars; empty for a build without one
        SidecarChoice sidecars = SidecarChoice::Written;
        int threads = 0; ///< that render an MP4; 0: one for each processor
    };
    /// Called after every frame, from several threads, one at a time; for a GIF once more when it is whole.
    using ProgressHandler = std::function<void(const ExportProgress&)>;

    explicit ExportEngine(Services services);

    /// Renders the project as it is at this moment; call it on a worker thread. The target is only replaced by a whole
    /// file: on any failure, and when `stop` or the registry asks for an end, nothing of the export stays.
    Result<ExportedFiles, ExportError> exportProject(const ProjectBundle::Contents& project,
                                                     const ExportRequest& request, const ProgressHandler& progress = {},
                                                     const std::stop_token& stop = {});

    /// "Movies/Morvelin/Exports/Export_<seconds>.<extension>" below the home folder; the folder is made if missing.
    Result<std::filesystem::path, ExportError> defaultOutputURL(ExportFormat format, ExportPurpose purpose) const;

private:
    Result<std::filesystem::path, ExportError> targetOf(const ExportRequest& request) const;

    Services m_services;
    SeededIdSource m_ids; ///< of its own: the program's are the main thread's
};

} // namespace morvelin
