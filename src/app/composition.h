// What the commands are made of: the one place where concrete back-ends are chosen. Owned by `main`.
#pragma once

#include <filesystem>
#include <memory>

#include "agent/MCPInstaller.h"
#include "agent/MorvelinCommandRouter.h"
#include "core/base/Date.h"
#include "core/base/GLibEventLoop.h"
#include "core/base/Identity.h"
#include "core/base/Log.h"
#include "platform/AudioInput.h"
#include "platform/Camera.h"
#include "platform/Defaults.h"
#include "platform/ImageFile.h"
#include "platform/InputPosting.h"
#include "platform/MovieReader.h"
#include "platform/MovieWriter.h"
#include "platform/Pointer.h"
#include "platform/Screen.h"
#include "platform/Trash.h"
#include "render/ExportEngine.h"

namespace morvelin {

/// The program's services, behind their interfaces.
struct Composition {
    Log log;
    std::filesystem::path home;
    SystemClock clock;
    RandomIdSource ids;
    std::unique_ptr<MovieReaderFactory> movieReaders;
    std::unique_ptr<SoundReaderFactory> soundReaders;
    std::unique_ptr<MovieWriterFactory> movieWriters;
    std::unique_ptr<PartedMovieWriterFactory> exportWriters;
    std::unique_ptr<Defaults> defaults;
    std::unique_ptr<Trash> trash;
    std::unique_ptr<ImageFileProbe> images;
    ExportActivity exports;
    GLibEventLoop loop; ///< last, and so the first to go: it waits for its workers, who use all the others

    /// What the agents' tools work with.
    [[nodiscard]] MorvelinCommandRouter::Services routerServices();
    [[nodiscard]] MCPInstaller::Places installerPlaces() const;
    /// For one export, with the settings as they stand.
    [[nodiscard]] ExportEngine exportEngine();
    /// A folder below "Movies/Morvelin": "Projects" or "Exports".
    [[nodiscard]] std::filesystem::path moviesFolder(const char* name) const {
        return home / "Movies" / "Morvelin" / name;
    }
};

/// What records a desktop. Where none can be reached, stand-ins that say why.
struct Desktop {
    std::unique_ptr<ScreenSource> screen;
    std::unique_ptr<PointerSource> pointer;
    std::unique_ptr<AudioInputSource> audioInput;
    std::unique_ptr<CameraSource> cameras;
};

[[nodiscard]] std::unique_ptr<Composition> compose(Log log = standardErrorLog());
/// The clock stamps what is recorded, and must outlive it.
/// Has takes coded by graphics hardware that has proved itself. Probes what is new, which takes a second or so.
void useBestTakeEncoder(Composition& composition);
[[nodiscard]] Desktop connectDesktop(const WallClock& clock);
/// The desktop's pointer and keyboard, for whoever drives it; the loop must outlive them.
[[nodiscard]] std::unique_ptr<InputPosting> connectInput(EventLoop& loop);

} // namespace morvelin
