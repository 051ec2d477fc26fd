#include "app/Commands.h"

#include <fmt/core.h>

#include "core/base/Files.h"
#include "media/PNG.h"
#include "render/ArtSheet.h"
#include "render/BackgroundPresets.h"

namespace morvelin {

namespace {

Result<Image, std::string> wantedArt(const ArtOptions& options) {
    if (!options.background) return artSheet(artSections());
    const auto background = BackgroundPresets::named(*options.background, {});
    if (!background) return failure(fmt::format("There is no background “{}”.", *options.background));
    return backgroundArt(*background, options.size);
}

Result<void, std::string> writeArt(const ArtOptions& options) {
    const auto art = wantedArt(options);
    if (!art) return failure(art.error());
    const auto png = encodePNG(*art);
    if (!png) return failure(png.error().description());
    const std::string_view bytes(reinterpret_cast<const char*>(png->data()), png->size());
    if (const auto written = writeFileAtomically(options.output, bytes); !written)
        return failure(written.error().description());
    return {};
}

} // namespace

int runArt(const ArtOptions& options) {
    if (const auto written = writeArt(options); !written) {
        fmt::print(stderr, "{}\n", written.error());
        return kFailure;
    }
    fmt::print("{}\n", options.output.string());
    return kSuccess;
}

} // namespace morvelin
