#include "app/composition.h"

#include <cstdlib>

#include <pwd.h>
#include <unistd.h>

#include "app/Version.h"
#include "capture/EncoderChoice.h"
#include "media/FFmpegHardwareEncoder.h"
#include "media/FFmpegImageProbe.h"
#include "media/FFmpegMovieReader.h"
#include "media/FFmpegMovieWriter.h"
#include "media/FFmpegSoundReader.h"
#include "platform/DefaultsKeys.h"
#include "platform/linux/GioTrash.h"
#include "platform/linux/KeyFileDefaults.h"
#include "platform/linux/LinuxCameraSource.h"
#include "platform/linux/PulseAudioInputSource.h"
#include "platform/null/NullInputPosting.h"
#include "platform/null/NullPointerSource.h"
#include "platform/null/NullScreenSource.h"
#include "platform/null/PatternCameraSource.h"
#include "platform/x11/X11InputPosting.h"
#include "platform/x11/X11PointerSource.h"
#include "platform/x11/X11ScreenSource.h"

namespace morvelin {

namespace {

std::filesystem::path homeFolder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home == '/') return home;
    const passwd* user = ::getpwuid(::getuid());
    return user != nullptr ? user->pw_dir : "/";
}

/// The desktop's rule (XDG Base Directory): a relative path in the variable does not count.
std::filesystem::path configFolder(const std::filesystem::path& home) {
    const char* configured = std::getenv("XDG_CONFIG_HOME");
    return configured != nullptr && *configured == '/' ? configured : home / ".config";
}

std::filesystem::path runningExecutable() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

/// Whoever works on the program on a machine without a camera may ask for a test pattern in its place.
std::unique_ptr<CameraSource> connectCameras() {
    auto cameras = std::make_unique<LinuxCameraSource>();
    if (std::getenv("MORVELIN_TEST_CAMERA") != nullptr && cameras->devices().empty())
        return std::make_unique<PatternCameraSource>();
    return cameras;
}

} // namespace

std::unique_ptr<Composition> compose(Log log) {
    auto composition = std::make_unique<Composition>();
    composition->log = std::move(log);
    composition->home = homeFolder();
    // An export has a decoder for each part that it renders at a time.
    composition->movieReaders = std::make_unique<FFmpegMovieReaderFactory>(FFmpegMovieReaderOptions{.threads = 1});
    composition->soundReaders = std::make_unique<FFmpegSoundReaderFactory>(composition->log);
    composition->movieWriters = std::make_unique<FFmpegMovieWriterFactory>();
    composition->exportWriters = std::make_unique<FFmpegMovieWriterFactory>();
    composition->defaults = std::make_unique<KeyFileDefaults>(configFolder(composition->home), composition->log);
    composition->trash = std::make_unique<GioTrash>();
    composition->images = std::make_unique<FFmpegImageProbe>();
    return composition;
}

void useBestTakeEncoder(Composition& composition) {
    const std::string encoder = chooseTakeEncoder(hardwareEncoders(), *composition.defaults,
                                                  probeInChild(runningExecutable()), composition.log);
    if (encoder.empty()) return;
    composition.movieWriters = std::make_unique<FFmpegMovieWriterFactory>(
        FFmpegMovieWriterOptions{.hardwareEncoder = encoder});
}

MorvelinCommandRouter::Services Composition::routerServices() {
    return {AgentFolders::below(home),        {ids, clock, log}, loop, *trash, *images, *movieReaders, {},
            [this] { return exportEngine(); }};
}

ExportEngine Composition::exportEngine() {
    const bool wantsSidecars = defaults->get(defaults::kFounderModeEnabled);
    return ExportEngine({*movieReaders, *soundReaders, *exportWriters, exports, ids, clock, log, home, kVersion,
                         wantsSidecars ? SidecarChoice::Written : SidecarChoice::None});
}

MCPInstaller::Places Composition::installerPlaces() const {
    const char* searchPath = std::getenv("PATH");
    return {home, MCPInstaller::relayBeside(runningExecutable()),
            MCPInstaller::searchPath(searchPath != nullptr ? searchPath : ""), "/"};
}

Desktop connectDesktop(const WallClock& clock) {
    Desktop desktop{.screen = {},
                    .pointer = std::make_unique<NullPointerSource>(),
                    .audioInput = std::make_unique<PulseAudioInputSource>(clock),
                    .cameras = connectCameras()};
    auto screen = X11ScreenSource::connect("");
    if (!screen) {
        desktop.screen = std::make_unique<NullScreenSource>(screen.error());
        return desktop;
    }
    desktop.screen = std::move(*screen);
    if (auto pointer = X11PointerSource::connect("")) desktop.pointer = std::move(*pointer);
    return desktop;
}

std::unique_ptr<InputPosting> connectInput(EventLoop& loop) {
    auto input = X11InputPosting::connect("", loop);
    if (!input) return std::make_unique<NullInputPosting>(input.error());
    return std::move(*input);
}

} // namespace morvelin
