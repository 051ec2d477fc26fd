// The program's one accent colour: left clicks and annotations have it unless the project says otherwise.
#pragma once

#include "core/Geometry.h"

namespace morvelin {

constexpr CodableColor kAccentColor{1.0, 0.412, 0.0, 1.0};

} // namespace morvelin
