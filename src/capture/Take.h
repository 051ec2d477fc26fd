// One take from start to project: the screen's movie, the pointer's track and shapes, and the folder made of them.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "capture/CaptureEngine.h"
#include "capture/CursorTracker.h"
#include "capture/DiskReserve.h"
#include "core/ProjectVersion.h"
#include "core/base/Identity.h"
#include "platform/MovieReader.h"
#include "platform/Pointer.h"
#include "storage/CreateBundle.h"

namespace morvelin {

/// Why a take did not start, or did not become a project.
struct TakeError {
    enum class Kind { DidNotStart, CouldNotSave };

    Kind kind = Kind::DidNotStart;
    std::string detail; ///< whole sentences; tells where the movie lies if there is one

    /// The heading of an alert.
    [[nodiscard]] std::string title() const;
    /// Heading and detail in one line.
    [[nodiscard]] std::string description() const { return title() + ": " + detail; }
};

/// A take that became a project.
struct FinishedTake {
    std::filesystem::path bundleURL;
    std::string name;
    Seconds duration;
    std::optional<std::string> interruption; ///< what the user is told where the take ended before it was stopped
};

/// On the main thread; must outlive its operations.
class Take {
public:
    struct Services {
        EventLoop& loop;
        ScreenSource& screen;
        PointerSource& pointer;
        MovieWriterFactory& writers;
        MovieReaderFactory& readers;
        IdSource& ids;
        const WallClock& clock;
        Log log;
    };
    struct Options {
        CaptureTarget target;
        std::filesystem::path projectsFolder;
        RecordingKind kind = RecordingKind::Screen;
    };

    Take(Services services, Options options);

    /// Called when the capture ended by itself; `stop` then gives what was recorded up to that moment.
    std::function<void()> onInterrupted;

    /// Comes back when the take runs.
    Task<Result<void, TakeError>> start();
    void pause();
    void resume();
    [[nodiscard]] bool isPaused() const { return m_engine.isPaused(); }
    /// Ends the take and makes the project. Where that fails the movie stays in the projects folder.
    Task<Result<FinishedTake, TakeError>> stop();

private:
    Result<CapturedRecording, CaptureError> salvaged(Result<CapturedRecording, CaptureError> recording);
    Result<FinishedTake, TakeError> makeProject(const CapturedRecording& recording,
                                                ProjectBundle::CursorShapeFiles shapes);

    Services m_services;
    Options m_options;
    CaptureEngine m_engine;
    CursorTracker m_tracker;
    std::optional<CursorShapeRecorder> m_shapes;
    std::optional<CaptureGeometry> m_geometry;
    DiskReserve m_reserve;
    Date m_startedAt;
    std::filesystem::path m_movie;
    std::vector<CursorEvent> m_cursorEvents;
    std::optional<CaptureError> m_interruption;
};

} // namespace morvelin
