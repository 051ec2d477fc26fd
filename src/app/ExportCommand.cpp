#include "app/Commands.h"

#include <csignal>
#include <mutex>

#include <fmt/core.h>

#include "app/ProgressLine.h"
#include "core/base/Text.h"
#include "platform/DefaultsKeys.h"
#include "render/ExportEngine.h"
#include "storage/ProjectsFolder.h"

namespace morvelin {

namespace {

/// The newest progress, handed from the exporting thread to the main one.
class ProgressMailbox {
public:
    void put(const ExportProgress& progress) {
        const std::lock_guard guard(m_lock);
        m_progress = progress;
    }
    [[nodiscard]] ExportProgress get() const {
        const std::lock_guard guard(m_lock);
        return m_progress;
    }

private:
    mutable std::mutex m_lock; ///< guards `m_progress`
    ExportProgress m_progress;
};

std::string progressText(const ExportProgress& progress, Seconds elapsed) {
    const double fraction = progress.fraction();
    std::string text = fmt::format("Exporting {} {:3.0f} %", progressBar(fraction, 30), 100 * fraction);
    if (fraction > 0.02 && elapsed > 0.5_s) {
        const double framesPerSecond = static_cast<double>(progress.frame) / elapsed.value;
        text += fmt::format("  {} left  {:.0f} frames/s", clockText(elapsed * ((1 - fraction) / fraction)),
                            framesPerSecond);
    }
    return text;
}

Result<std::filesystem::path, std::string> chosenProject(const Composition& composition,
                                                         const std::optional<std::string>& wanted) {
    const ProjectsFolder library(composition.moviesFolder("Projects"));
    if (!wanted) {
        if (auto last = library.lastModified()) return std::move(*last);
        return failure(std::string("There are no recordings in your Projects folder yet."));
    }
    if (auto named = library.find(*wanted, composition.home)) return std::move(*named);
    return failure(fmt::format("There is no project at {}.", *wanted));
}

/// Without a word of the format, the output's name tells it.
ExportFormat formatOf(const ExportOptions& options) {
    if (options.format) return *options.format;
    const bool isNamedGIF = options.output && caseFolded(options.output->extension().string()) == ".gif";
    return isNamedGIF ? ExportFormat::GIF : ExportFormat::MP4;
}

ExportRequest requestOf(const ExportOptions& options) {
    ExportRequest request;
    request.format = formatOf(options);
    request.quality = options.quality.value_or(VideoQuality::High);
    request.purpose = options.forAI ? ExportPurpose::ForAI : ExportPurpose::Viewing;
    request.output = options.output;
    return request;
}

/// A picker of the desktop program begins with what was chosen last, wherever that was.
void rememberQuality(const ExportOptions& options, Composition& composition) {
    if (!options.quality || options.forAI) return;
    const auto set = composition.defaults->set(defaults::kLastExportQuality,
                                               std::string(json::rawValue(*options.quality)));
    if (!set) composition.log(set.error());
}

/// One run of the command; lives on the main thread until the loop ends.
class ExportRun {
public:
    ExportRun(Composition& composition, const ExportOptions& options)
        : m_composition(composition),
          m_request(requestOf(options)),
          m_engine(composition.exportEngine()) {}

    int run(const ProjectBundle::Contents& project) {
        const auto stop = [this] { m_stop.request_stop(); };
        const auto interrupt = m_composition.loop.onSignal(SIGINT, stop);
        const auto terminate = m_composition.loop.onSignal(SIGTERM, stop);
        const auto hangUp = m_composition.loop.onSignal(SIGHUP, stop);
        const auto tick = m_composition.loop.every(
            0.1_s, [this] { m_line.show(progressText(m_progress.get(), m_composition.loop.now() - m_start)); });
        m_composition.loop.spawn(exportProject(project));
        m_composition.loop.run();
        return m_status;
    }

private:
    Task<void> exportProject(const ProjectBundle::Contents& project) {
        m_start = m_composition.loop.now();
        const auto files = co_await onWorker(m_composition.loop, [&] {
            const auto report = [this](const ExportProgress& progress) { m_progress.put(progress); };
            return m_engine.exportProject(project, m_request, report, m_stop.get_token());
        });
        m_line.clear();
        m_status = tell(files);
        m_composition.loop.quit();
    }

    static int tell(const Result<ExportedFiles, ExportError>& files) {
        if (!files) {
            fmt::print(stderr, "{}\n", files.error().description());
            return files.error().kind == ExportError::Kind::Stopped ? kStoppedByUser : kFailure;
        }
        fmt::print("{}\n", files->video.string());
        for (const auto& sidecar : {files->events, files->transcript})
            if (sidecar) fmt::print("{}\n", sidecar->string());
        return kSuccess;
    }

    Composition& m_composition;
    ExportRequest m_request;
    ExportEngine m_engine;
    std::stop_source m_stop;
    ProgressMailbox m_progress;
    ProgressLine m_line;
    HostTime m_start;
    int m_status = kFailure;
};

} // namespace

int runExport(Composition& composition, const ExportOptions& options) {
    const auto bundle = chosenProject(composition, options.project);
    if (!bundle) {
        fmt::print(stderr, "{}\n", bundle.error());
        return kFailure;
    }
    const auto project = ProjectBundle::load(*bundle, {composition.ids, composition.clock, composition.log});
    if (!project) {
        composition.log("[Morvelin] Failed to open bundle: " + project.error().description());
        return kFailure;
    }
    if (project->didConvertLegacyBundle)
        composition.log(fmt::format("[Morvelin] Converted “{}” to the versioned bundle format", project->capture.name));
    rememberQuality(options, composition);
    return ExportRun(composition, options).run(*project);
}

} // namespace morvelin
