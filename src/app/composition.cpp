#include "app/composition.h"

#include <cstdlib>

#include <pwd.h>
#include <unistd.h>

#include "media/FFmpegImageProbe.h"
#include "media/FFmpegMovieReader.h"
#include "media/FFmpegMovieWriter.h"
#include "platform/linux/GioTrash.h"
#include "platform/linux/KeyFileDefaults.h"
#include "platform/null/NullPointerSource.h"
#include "platform/null/NullScreenSource.h"
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

} // namespace

std::unique_ptr<Composition> compose(Log log) {
    auto composition = std::make_unique<Composition>();
    composition->log = std::move(log);
    composition->home = homeFolder();
    composition->movieReaders = std::make_unique<FFmpegMovieReaderFactory>();
    composition->movieWriters = std::make_unique<FFmpegMovieWriterFactory>();
    composition->defaults = std::make_unique<KeyFileDefaults>(configFolder(composition->home), composition->log);
    composition->trash = std::make_unique<GioTrash>();
    composition->images = std::make_unique<FFmpegImageProbe>();
    return composition;
}

MorvelinCommandRouter::Services Composition::routerServices() {
    return {AgentFolders::below(home), {ids, clock, log}, loop, *trash, *images, *movieReaders};
}

MCPInstaller::Places Composition::installerPlaces() const {
    const char* searchPath = std::getenv("PATH");
    return {home, MCPInstaller::relayBeside(runningExecutable()),
            MCPInstaller::searchPath(searchPath != nullptr ? searchPath : ""), "/"};
}

Desktop connectDesktop() {
    auto screen = X11ScreenSource::connect("");
    if (!screen) return {std::make_unique<NullScreenSource>(screen.error()), std::make_unique<NullPointerSource>()};
    auto pointer = X11PointerSource::connect("");
    if (!pointer) return {std::move(*screen), std::make_unique<NullPointerSource>()};
    return {std::move(*screen), std::move(*pointer)};
}

} // namespace morvelin
