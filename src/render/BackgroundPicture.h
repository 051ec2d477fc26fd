// The user's own picture as a background: read once for a film, and laid over the whole output, centred, without bars.
#pragma once

#include <filesystem>
#include <memory>

#include "core/Style.h"
#include "render/BackgroundPainting.h"

namespace morvelin {

/// The picture of a project's background, no larger than it takes to cover the output. Null when the background is of
/// another kind, or when its picture is gone or can't be read.
[[nodiscard]] std::shared_ptr<const Image> loadBackgroundImage(const Background& background,
                                                               const std::filesystem::path& bundleFolder,
                                                               PixelSize output);

/// What is transparent in the image shows black.
void paintImage(const Image& image, Subsampling subsampling, DeepPlanes& planes);

} // namespace morvelin
