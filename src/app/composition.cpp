#include "app/composition.h"

#include <cstdlib>

#include <pwd.h>
#include <unistd.h>

#include "media/FFmpegMovieReader.h"
#include "media/FFmpegMovieWriter.h"
#include "platform/null/NullPointerSource.h"
#include "platform/null/NullScreenSource.h"
#include "platform/x11/X11PointerSource.h"
#include "platform/x11/X11ScreenSource.h"

namespace morvelin {

namespace {

std::filesystem::path homeFolder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return home;
    const passwd* user = ::getpwuid(::getuid());
    return user != nullptr ? user->pw_dir : "/";
}

} // namespace

std::unique_ptr<Composition> compose() {
    auto composition = std::make_unique<Composition>();
    composition->log = standardErrorLog();
    composition->home = homeFolder();
    composition->movieReaders = std::make_unique<FFmpegMovieReaderFactory>();
    composition->movieWriters = std::make_unique<FFmpegMovieWriterFactory>();
    return composition;
}

Desktop connectDesktop() {
    auto screen = X11ScreenSource::connect("");
    if (!screen) return {std::make_unique<NullScreenSource>(screen.error()), std::make_unique<NullPointerSource>()};
    auto pointer = X11PointerSource::connect("");
    if (!pointer) return {std::move(*screen), std::make_unique<NullPointerSource>()};
    return {std::move(*screen), std::move(*pointer)};
}

} // namespace morvelin
