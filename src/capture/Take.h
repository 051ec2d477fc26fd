// One take from start to project: the screen's movie, the pointer's track and shapes, and the folder made of them.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "capture/CaptureEngine.h"
#include "capture/CursorTracker.h"
#include "capture/DiskReserve.h"
#include "capture/FreeSpace.h"
#include "capture/TakeCamera.h"
#include "capture/TakeFolder.h"
#include "capture/TakeJournal.h"
#include "capture/TakeWatch.h"
#include "core/ProjectVersion.h"
#include "core/base/Identity.h"
#include "platform/AudioInput.h"
#include "platform/Camera.h"
#include "platform/MovieReader.h"
#include "platform/Pointer.h"
#include "storage/CreateBundle.h"

namespace morvelin {

/// Why a take did not start, or did not become a project.
struct TakeError {
    enum class Kind { DidNotStart, CouldNotSave };

    Kind kind = Kind::DidNotStart;
    std::string detail; ///< whole sentences; tells where the movie lies if there is one
    std::optional<CaptureError::Kind> cause{};

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
    std::optional<std::string> shortfall;    ///< what the user is told where the machine could not keep up
};

/// How far a running take is.
struct TakeProgress {
    Seconds recorded;
    std::int64_t frames = 0;
    std::int64_t lostFrames = 0;           ///< that the screen had while the machine was busy
    std::int64_t bytes = 0;                ///< on disk
    std::optional<std::int64_t> freeBytes; ///< on that disk; nothing where it isn't known
};

/// On the main thread; must outlive its operations.
class Take {
public:
    struct Services {
        EventLoop& loop;
        ScreenSource& screen;
        PointerSource& pointer;
        AudioInputSource& audioInput;
        CameraSource& cameras;
        MovieWriterFactory& writers;
        MovieReaderFactory& readers;
        IdSource& ids;
        const WallClock& clock;
        Log log;
        FreeSpace freeSpace = freeSpaceOfDisk;
    };
    struct Options {
        CaptureTarget target;
        std::filesystem::path projectsFolder;
        RecordingKind kind = RecordingKind::Screen;
        bool systemAudio = false;
        std::optional<std::string> microphone{}; ///< its id; empty: the default one
        std::optional<std::string> camera{};     ///< its id; empty: the first one
    };

    Take(Services services, Options options);

    /// Called when the capture ended by itself; `stop` then gives what was recorded up to that moment.
    std::function<void()> onInterrupted;
    /// Called with whole sentences for the user while the take goes on, such as that a microphone is lost, or that
    /// the disk fills up.
    std::function<void(const std::string&)> onNotice;

    /// Comes back when the take runs.
    Task<Result<void, TakeError>> start();
    void pause();
    void resume();
    [[nodiscard]] bool isPaused() const { return m_engine.isPaused(); }
    [[nodiscard]] TakeProgress progress() const;
    /// What the take shows; nothing before it runs.
    [[nodiscard]] const std::optional<CaptureGeometry>& geometry() const { return m_geometry; }
    /// Ends the take and makes the project. Where that fails the movie stays in the take's folder.
    Task<Result<FinishedTake, TakeError>> stop();

private:
    Result<void, CaptureError> openFolder();
    void beginTracking(const CaptureStart& started);
    void journalCamera();
    [[nodiscard]] TakeWatch::Reading measure() const;
    void tell(const std::string& sentence) const;
    Result<CapturedRecording, CaptureError> salvaged(Result<CapturedRecording, CaptureError> recording);
    Result<FinishedTake, TakeError> makeProject(const CapturedRecording& recording,
                                                const std::optional<FinishedCamera>& camera,
                                                ProjectBundle::CursorShapeFiles shapes);

    Services m_services;
    Options m_options;
    CaptureEngine m_engine;
    std::optional<TakeCamera> m_camera;
    std::optional<HostTime> m_cameraBegan;
    CursorTracker m_tracker;
    std::optional<CursorShapeRecorder> m_shapes;
    std::optional<CaptureGeometry> m_geometry;
    HostTime m_firstFrameTime;
    DiskReserve m_reserve;
    Date m_startedAt;
    std::optional<TakeFolder> m_folder;
    std::optional<TakeJournal> m_journal;
    std::optional<TakeWatch> m_watch;
    std::vector<CursorEvent> m_cursorEvents;
    std::optional<CaptureError> m_interruption;
};

} // namespace morvelin
