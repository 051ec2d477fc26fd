// The figures that lie on the mesh backgrounds.
#pragma once

#include <vector>

#include "platform/Picture.h"
#include "render/BackgroundArt.h"
#include "render/BackgroundPresets.h"

namespace morvelin {

/// The figures of a preset at an output's size, from the bottom up; none for a preset that is no mesh.
[[nodiscard]] std::vector<ArtShape> meshShapes(const BackgroundPresets::GradientPreset& preset, PixelSize output);

} // namespace morvelin
