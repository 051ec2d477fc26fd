// Paints a wallpaper into the planes of a stage, its rows on all cores.
#pragma once

#include "render/BackgroundPainting.h"
#include "render/wallpapers/Wallpaper.h"

namespace morvelin {

void paintWallpaper(const wallpapers::Wallpaper& wallpaper, Subsampling subsampling, DeepPlanes& planes);

} // namespace morvelin
