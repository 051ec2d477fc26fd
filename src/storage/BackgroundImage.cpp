#include "storage/BackgroundImage.h"

#include "core/base/PercentEncoding.h"
#include "storage/BundleFiles.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

/// The path's names behind the innermost project's folder; empty where it leads into none.
fs::path withinBundle(const fs::path& path) {
    fs::path inside;
    bool isInside = false;
    for (const fs::path& name : path.parent_path()) {
        if (ProjectBundle::hasBundleExtension(name.native())) {
            isInside = true;
            inside.clear();
        } else if (isInside) {
            inside /= name;
        }
    }
    return isInside ? inside / path.filename() : fs::path();
}

} // namespace

std::optional<fs::path> backgroundImagePath(const fs::path& bundleFolder, const Background& background) {
    if (!background.imageURL) return std::nullopt;
    const fs::path stored = pathOfFileURL(*background.imageURL).lexically_normal();
    const fs::path inside = withinBundle(stored);
    if (!inside.empty() && ProjectBundle::isPresent(bundleFolder / inside)) return bundleFolder / inside;
    return stored;
}

} // namespace morvelin
