// Paints the smooth colours and the figures of a background.
#pragma once

#include "render/BackgroundArt.h"
#include "render/BackgroundPainting.h"

namespace morvelin {

void paintUniformly(const BackgroundArt& art, DeepPlanes& planes);
void paintGradient(const BackgroundArt& art, PixelSize size, Subsampling subsampling, DeepPlanes& planes);

} // namespace morvelin
